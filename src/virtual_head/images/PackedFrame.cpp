#include "virtual_head/images/PackedFrame.h"

#include <cstring>

#include "platform/include/PackedFrameLayout.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr std::size_t kGroup = 4;  // pixels of one image in each 8 bytes

void CopyReversed(const std::uint8_t* from, std::uint8_t* to) {
    std::uint32_t group = 0;
    std::memcpy(&group, from, kGroup);
    group =
        (group >> 24U) | ((group >> 8U) & 0xFF00U) | ((group << 8U) & 0xFF0000U) | (group << 24U);
    std::memcpy(to, &group, kGroup);
}

void WriteMarker(std::uint8_t* packed) {
    for (const hardware::MarkerByte& byte : hardware::kColorMarker) {
        packed[byte.offset] = byte.value;
    }
}

}  // namespace

void PackMono(const std::uint8_t* first, const std::uint8_t* second, std::size_t pixels,
              std::uint8_t* packed) {
    for (std::size_t i = 0; i + kGroup <= pixels; i += kGroup) {
        CopyReversed(first + i, packed + 2 * i);
        CopyReversed(second + i, packed + 2 * i + kGroup);
    }
    if (hardware::CarriesColorMarker(packed)) {
        ++packed[0];
    }
}

void PackColor(const std::uint8_t* mosaic, std::size_t pixels, std::uint8_t* packed) {
    for (std::size_t i = 0; i + kGroup <= pixels; i += kGroup) {
        std::memset(packed + 2 * i, 0, kGroup);
        CopyReversed(mosaic + i, packed + 2 * i + kGroup);
    }
    WriteMarker(packed);
}

void PackColorFromMono(const std::uint8_t* packedMono, std::size_t pixels, std::uint8_t* packed) {
    for (std::size_t i = 0; i + kGroup <= pixels; i += kGroup) {
        std::memset(packed + 2 * i, 0, kGroup);
        std::memcpy(packed + 2 * i + kGroup, packedMono + 2 * i, kGroup);
    }
    WriteMarker(packed);
}

void WriteKey(std::uint8_t key, std::uint8_t* packed) {
    packed[hardware::kKeyByte] = key;
}

}  // namespace Korvex3Sync::virtual_head
