#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Korvex3Sync::tests {

/// Unpacks a packed frame from the description of its layout, independently of the code that packs
/// it.
struct Unpacked {
    bool marker = false;
    std::uint8_t key = 0;
    std::vector<std::uint8_t> first;
    std::vector<std::uint8_t> second;
};

inline Unpacked Unpack(const std::uint8_t* packed, std::size_t pixels) {
    Unpacked frame;
    frame.marker = packed[0] == 0xAA && packed[1] == 0xAA && packed[2] == 0x55 &&
                   packed[3] == 0x55 && packed[9] == 0xAA && packed[10] == 0x55 &&
                   packed[11] == 0x55;
    frame.key = packed[4];
    for (std::size_t group = 0; group < pixels / 4; ++group) {
        const std::uint8_t* bytes = packed + 8 * group;
        frame.first.insert(frame.first.end(), {bytes[3], bytes[2], bytes[1], bytes[0]});
        frame.second.insert(frame.second.end(), {bytes[7], bytes[6], bytes[5], bytes[4]});
    }
    return frame;
}

}  // namespace Korvex3Sync::tests
