#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace Korvex3Sync::link {

using ByteSpan = std::span<const std::uint8_t>;

inline ByteSpan SpanOf(const QByteArray& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::size_t>(bytes.size())};
}

/// Appends numbers, most significant byte first.
class ByteWriter {
public:
    template <class Unsigned>
    void Number(Unsigned value) {
        char bytes[sizeof(Unsigned)];
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            bytes[sizeof(Unsigned) - 1 - i] = static_cast<char>(value & 0xFFU);
            value = static_cast<Unsigned>(sizeof(Unsigned) > 1 ? value >> 8U : 0);
        }
        m_bytes.append(bytes, sizeof(bytes));
    }
    void Append(const QByteArray& bytes) { m_bytes.append(bytes); }
    const QByteArray& Bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

/// Reads what a ByteWriter wrote. Every read checks what is left; a read that fails takes nothing.
class ByteReader {
public:
    explicit ByteReader(ByteSpan bytes) : m_left(bytes) {}

    template <class Unsigned>
    bool Number(Unsigned& value) {
        if (m_left.size() < sizeof(Unsigned)) {
            return false;
        }
        std::uint64_t read = 0;
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            read = read << 8U | m_left[i];
        }
        value = static_cast<Unsigned>(read);
        m_left = m_left.subspan(sizeof(Unsigned));
        return true;
    }
    std::size_t Left() const { return m_left.size(); }
    ByteSpan Rest() const { return m_left; }

private:
    ByteSpan m_left;
};

}  // namespace Korvex3Sync::link
