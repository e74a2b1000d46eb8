#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// Facts about the packed frames that the cameras of a head deliver: two images of the same size,
/// interleaved. Each 8 bytes hold four pixels of the first image in reversed order, then four of
/// the second.
namespace Korvex3Sync::hardware {

/// The byte of a packed frame that holds the trigger number modulo 256. It replaces a pixel of the
/// second image.
inline constexpr std::size_t kKeyByte = 4;

/// One byte of the marker.
struct MarkerByte {
    std::size_t offset;
    std::uint8_t value;
};

/// The marker of a colour frame. It is part of the first image; the mosaic is the second image.
inline constexpr std::array<MarkerByte, 7> kColorMarker{
    {{0, 0xAA}, {1, 0xAA}, {2, 0x55}, {3, 0x55}, {9, 0xAA}, {10, 0x55}, {11, 0x55}}};
/// Bytes from the start of the frame to the end of the marker.
inline constexpr std::size_t kMarkerEnd = kColorMarker.back().offset + 1;

/// Whether a packed frame carries the colour marker. Reads its first kMarkerEnd bytes.
constexpr bool CarriesColorMarker(const std::uint8_t* packed) {
    return std::all_of(kColorMarker.begin(), kColorMarker.end(), [packed](const MarkerByte& byte) {
        return packed[byte.offset] == byte.value;
    });
}

}  // namespace Korvex3Sync::hardware
