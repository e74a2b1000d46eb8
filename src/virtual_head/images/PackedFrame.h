#pragma once

#include <cstddef>
#include <cstdint>

#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// The camera's packed frame: two images of `pixels` pixels each in 2 x pixels bytes. Each 8 bytes
/// contain four pixels of the first image (bytes 3, 2, 1, 0) and four of the second (bytes 7, 6, 5,
/// 4). Byte 4 is the key, which replaces pixel 3 of the second image. A colour frame has the marker
/// (bytes 0-1 0xAA, 2-3 0x55, 9 0xAA, 10-11 0x55) in the first image, and its mosaic is the second
/// image. `pixels` is a multiple of 4 and at least 8. The functions neither allocate nor block.

/// Packs a mono frame. If the images happen to contain the marker, one pixel of the first image is
/// changed by one grey level.
KORVEX_VIRTUAL_HEAD_API void PackMono(const std::uint8_t* first, const std::uint8_t* second,
                                      std::size_t pixels, std::uint8_t* packed);
/// Packs a colour frame from its mosaic (RGGB) and writes the marker.
KORVEX_VIRTUAL_HEAD_API void PackColor(const std::uint8_t* mosaic, std::size_t pixels,
                                       std::uint8_t* packed);
/// Packs a colour frame whose mosaic is the first image of a packed mono frame.
KORVEX_VIRTUAL_HEAD_API void PackColorFromMono(const std::uint8_t* packedMono, std::size_t pixels,
                                               std::uint8_t* packed);
KORVEX_VIRTUAL_HEAD_API void WriteKey(std::uint8_t key, std::uint8_t* packed);

}  // namespace Korvex3Sync::virtual_head
