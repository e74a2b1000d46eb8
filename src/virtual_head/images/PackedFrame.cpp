#include "virtual_head/images/PackedFrame.h"

#include <array>
#include <cstring>

namespace Korvex3Sync::virtual_head {
namespace {

constexpr std::size_t kGroup = 4;  // pixels of one image in each 8 bytes
constexpr std::size_t kKeyByte = 4;

struct MarkerByte {
    std::size_t offset;
    std::uint8_t value;
};
// All of them lie in the first image's place.
constexpr std::array<MarkerByte, 7> kMarker{
    {{0, 0xAA}, {1, 0xAA}, {2, 0x55}, {3, 0x55}, {9, 0xAA}, {10, 0x55}, {11, 0x55}}};

void CopyReversed(const std::uint8_t* from, std::uint8_t* to) {
    std::uint32_t group = 0;
    std::memcpy(&group, from, kGroup);
    group =
        (group >> 24U) | ((group >> 8U) & 0xFF00U) | ((group << 8U) & 0xFF0000U) | (group << 24U);
    std::memcpy(to, &group, kGroup);
}

bool HasMarker(const std::uint8_t* packed) {
    for (const MarkerByte& byte : kMarker) {
        if (packed[byte.offset] != byte.value) {
            return false;
        }
    }
    return true;
}

void WriteMarker(std::uint8_t* packed) {
    for (const MarkerByte& byte : kMarker) {
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
    if (HasMarker(packed)) {
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
    packed[kKeyByte] = key;
}

}  // namespace Korvex3Sync::virtual_head
