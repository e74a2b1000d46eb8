#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Korvex3Sync::board {

/// The payload of a report: 32-bit values (little-endian), then bytes. A value type that never
/// throws.
class Payload {
public:
    static constexpr std::size_t kCapacity = 51;

    /// Returns false and adds nothing if there is no room.
    bool PutValue(std::int32_t value);
    bool PutBytes(std::span<const std::uint8_t> bytes);

    /// The value at this index, from 0; 0 beyond the end.
    std::int32_t ValueAt(std::size_t index) const;
    std::span<const std::uint8_t> Bytes() const { return {m_bytes.data(), m_size}; }
    /// The bytes after this many values; may be empty.
    std::span<const std::uint8_t> BytesBehind(std::size_t values) const;
    std::size_t Size() const { return m_size; }

private:
    std::array<std::uint8_t, kCapacity> m_bytes{};
    std::size_t m_size = 0;
};

/// A payload of values only. At most 12 fit; further values are left out.
Payload ValuesPayload(std::span<const std::int32_t> values);

}  // namespace Korvex3Sync::board
