#include "platform/link/wire/Frames.h"

#include <cstdint>

namespace Korvex3Sync::link {

QByteArray Framed(const QByteArray& message) {
    ByteWriter out;
    out.Number(static_cast<std::uint32_t>(message.size()));
    out.Append(message);
    return out.Bytes();
}

void FrameReader::Append(const QByteArray& bytes) {
    m_bytes.remove(0, m_start);
    m_start = 0;
    m_bytes.append(bytes);
}

std::optional<ByteSpan> FrameReader::Next() {
    ByteReader in(SpanOf(m_bytes).subspan(static_cast<std::size_t>(m_start)));
    std::uint32_t size = 0;
    if (!m_fault.empty() || !in.Number(size)) {
        return std::nullopt;
    }
    if (size == 0 || size > m_most) {
        m_fault = "a message of " + std::to_string(size) + " bytes; 1 to " +
                  std::to_string(m_most) + " are allowed";
        return std::nullopt;
    }
    if (in.Left() < size) {
        return std::nullopt;
    }
    m_start += static_cast<int>(sizeof(size) + size);
    return in.Rest().first(size);
}

}  // namespace Korvex3Sync::link
