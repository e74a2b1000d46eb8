#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// The faults that a head can have. docs/virtual-head.md describes each: what happens, and when it
/// counts as used.
enum class FaultKind {
    // By call.
    Fail,
    Slow,
    Hang,
    // The board.
    BoardVanish,
    BoardReturn,
    BoardMute,
    BoardAnswer,
    BoardLate,
    // The cameras.
    CameraVanish,
    CameraReturn,
    CameraStop,
    // Frames, by trigger.
    LoseMono,
    LoseColor,
    LoseBoth,
    TearMono,
    TearColor,
    MisSizeMono,
    MisSizeColor,
    RepeatMono,
    RepeatColor,
    Delay,
    SkipKeys,
};

/// An order for one fault. A member that its kind does not use keeps its default.
struct FaultOrder {
    FaultKind kind = FaultKind::Fail;
    /// Fail, Slow, Hang: the platform function.
    std::string call = {};
    /// Fail, Slow, Hang: calls; BoardLate: answers; frames: triggers; SkipKeys: keys. At least 1.
    int times = 1;
    /// Slow, BoardLate: the extra time of each. Nominal time.
    std::chrono::milliseconds extra{0};
    /// BoardVanish, BoardMute, CameraVanish, Hang: the fault ends after this time; 0: it does not
    /// end by itself. Nominal time.
    std::chrono::milliseconds lasting{0};
    /// BoardMute: the board stays mute during this many further opens, and answers from the
    /// following open on; 0: opens do not end it.
    int opens = 0;
    /// Delay: the number of triggers. At least 1.
    int byTriggers = 1;
};

/// A fault that begins by itself. Exactly one of `atTrigger` and `at` is set; with a `chance` both
/// may be missing.
struct TimedFault {
    FaultOrder order = {};
    /// Begins with the trigger of this number, counted from 0 since the head was created; if that
    /// trigger is skipped, with the next one.
    std::optional<std::uint64_t> atTrigger = std::nullopt;
    /// Begins this long after the head was requested. Nominal time.
    std::optional<std::chrono::milliseconds> at = std::nullopt;
    /// From then on (from the first trigger, if neither is set) the fault begins at each trigger
    /// with this probability, above 0 and at most 1. Nothing happens while no camera is started.
    std::optional<double> chance = std::nullopt;
};

/// The parameters of a fault, in addition to its kind.
enum class FaultParameter { Call, Times, Extra, Lasting, Opens, ByTriggers };

/// A numeric parameter of a fault, with its key in a head file.
struct FaultNumber {
    FaultParameter parameter;
    const char* key;
    std::int64_t lowest;
    std::int64_t highest;
    const char* meaning;  // a phrase without a full stop
};
KORVEX_VIRTUAL_HEAD_API std::span<const FaultNumber> FaultNumbers();
/// The value of a parameter in an order; 0 for the call.
std::int64_t ValueOf(const FaultOrder& order, FaultParameter parameter);

/// The latest time and trigger at which a fault can begin.
inline constexpr std::int64_t kLatestFaultMs = 86'400'000;
inline constexpr std::int64_t kLatestFaultTrigger = 1'000'000'000;

/// All kinds.
std::vector<FaultKind> FaultKinds();
/// The name of a kind: "lose-mono".
KORVEX_VIRTUAL_HEAD_API const char* Name(FaultKind kind);
KORVEX_VIRTUAL_HEAD_API std::optional<FaultKind> FaultKindNamed(std::string_view name);
KORVEX_VIRTUAL_HEAD_API bool Takes(FaultKind kind, FaultParameter parameter);
/// Whether a parameter is mandatory for a kind.
bool Needs(FaultKind kind, FaultParameter parameter);

/// Checks an order. Returns what is wrong, as one line, or nothing if it is valid.
std::optional<std::string> Check(const FaultOrder& order);
/// Checks only the call of an order.
std::optional<std::string> CheckCall(const FaultOrder& order);
std::optional<std::string> Check(const TimedFault& fault);

/// "slow SnapShot, times 3, extra_ms 20"
KORVEX_VIRTUAL_HEAD_API std::string Text(const FaultOrder& order);
/// The same with its time: "lose-mono, times 1, at_trigger 100"
KORVEX_VIRTUAL_HEAD_API std::string Text(const TimedFault& fault);

}  // namespace Korvex3Sync::virtual_head
