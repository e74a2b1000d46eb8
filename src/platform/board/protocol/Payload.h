#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Korvex3Sync::board {

/// What a report carries for its command: 32-bit values (little-endian), then bytes. A value type;
/// no function of it fails but by its result.
class Payload {
public:
    static constexpr std::size_t kCapacity = 51;

    /// False, and nothing is added, when there is no room.
    bool PutValue(std::int32_t value);
    bool PutBytes(std::span<const std::uint8_t> bytes);

    /// The value at this place, counted in values from 0; 0 behind the end.
    std::int32_t ValueAt(std::size_t index) const;
    std::span<const std::uint8_t> Bytes() const { return {m_bytes.data(), m_size}; }
    /// What stands behind this many values; empty when there is nothing.
    std::span<const std::uint8_t> BytesBehind(std::size_t values) const;
    std::size_t Size() const { return m_size; }

private:
    std::array<std::uint8_t, kCapacity> m_bytes{};
    std::size_t m_size = 0;
};

/// A payload of values only. At most 12 fit; more are a mistake of the caller and are left out.
Payload ValuesPayload(std::span<const std::int32_t> values);

}  // namespace Korvex3Sync::board
