#include "platform/board/protocol/Payload.h"

#include <algorithm>

namespace Korvex3Sync::board {
namespace {

constexpr std::size_t kValueSize = 4;

}  // namespace

bool Payload::PutValue(std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    const std::array<std::uint8_t, kValueSize> bytes{
        static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
        static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 24)};
    return PutBytes(bytes);
}

bool Payload::PutBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > kCapacity - m_size) {
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(m_size));
    m_size += bytes.size();
    return true;
}

std::int32_t Payload::ValueAt(std::size_t index) const {
    if (index >= m_size / kValueSize) {
        return 0;
    }
    std::uint32_t bits = 0;
    for (std::size_t byte = kValueSize; byte-- > 0;) {
        bits = bits << 8 | m_bytes[index * kValueSize + byte];
    }
    return static_cast<std::int32_t>(bits);
}

std::span<const std::uint8_t> Payload::BytesBehind(std::size_t values) const {
    return values > m_size / kValueSize ? std::span<const std::uint8_t>{}
                                        : Bytes().subspan(values * kValueSize);
}

Payload ValuesPayload(std::span<const std::int32_t> values) {
    Payload payload;
    for (const std::int32_t value : values) {
        payload.PutValue(value);
    }
    return payload;
}

}  // namespace Korvex3Sync::board
