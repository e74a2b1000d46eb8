#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Facts about the synchronization board that both sides of the board library rely on. They are
/// properties of the hardware: changing one here does not change the board.
namespace Korvex3Sync::hardware {

/// USB identifiers of the board.
inline constexpr std::uint16_t kBoardVendor = 0x3267;
inline constexpr std::uint16_t kBoardProduct = 0x5752;

/// A USB identifier as four hexadecimal digits and a terminating zero, as zr3DInitHidDev takes it.
constexpr std::array<char, 5> HexText(std::uint16_t identifier) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::array<char, 5> text{};
    for (std::size_t place = 0; place < 4; ++place) {
        text[place] = kDigits[(identifier >> (4 * (3 - place))) & 0xFU];
    }
    return text;
}

/// The board's numbers for MASK_TRIGGER_MODE. Any other number means off, too.
namespace trigger_mode {
inline constexpr int kLines = 1;            // a mono frame under the laser lines
inline constexpr int kPattern = 2;          // a mono frame under the projected pattern
inline constexpr int kPatternAndColor = 3;  // the same, then a colour frame with the same key
inline constexpr int kSingleColor = 4;      // one colour frame each time the mode is written
inline constexpr int kOff = 5;
inline constexpr int kLinesAndColor = 6;  // as kLines, then a colour frame with the same key
}  // namespace trigger_mode

/// How the trigger runs in a mode.
enum class TriggerRun {
    Off,
    Single,   // gives one trigger each time the mode is written
    Running,  // gives triggers at the trigger period, each with a mono frame
};

constexpr TriggerRun RunOf(int mode) {
    switch (mode) {
        case trigger_mode::kLines:
        case trigger_mode::kPattern:
        case trigger_mode::kPatternAndColor:
        case trigger_mode::kLinesAndColor:
            return TriggerRun::Running;
        case trigger_mode::kSingleColor:
            return TriggerRun::Single;
        default:
            return TriggerRun::Off;
    }
}

/// Whether a colour frame follows each mono frame.
constexpr bool AddsColor(int mode) {
    return mode == trigger_mode::kPatternAndColor || mode == trigger_mode::kLinesAndColor;
}

/// Whether the laser lines light the mono frames.
constexpr bool ShowsLines(int mode) {
    return mode == trigger_mode::kLines || mode == trigger_mode::kLinesAndColor;
}

/// Whether the projected pattern lights the mono frames.
constexpr bool ShowsPattern(int mode) {
    return mode == trigger_mode::kPattern || mode == trigger_mode::kPatternAndColor;
}

}  // namespace Korvex3Sync::hardware
