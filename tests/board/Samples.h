#pragma once

#include <vector>

#include "platform/board/protocol/Codec.h"

namespace Korvex3Sync::tests {

/// A payload of this shape whose bytes all differ.
inline board::Payload SamplePayload(const board::PayloadShape& shape) {
    board::Payload payload;
    for (std::size_t value = 0; value < shape.values; ++value) {
        payload.PutValue(static_cast<std::int32_t>(0x81020304U + 0x10101010U * value));
    }
    std::vector<std::uint8_t> bytes(shape.mostBytes);
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        bytes[place] = static_cast<std::uint8_t>(0xFF - place);
    }
    payload.PutBytes(bytes);
    return payload;
}

inline std::vector<std::uint8_t> BytesOf(const board::Payload& payload) {
    return {payload.Bytes().begin(), payload.Bytes().end()};
}

}  // namespace Korvex3Sync::tests
