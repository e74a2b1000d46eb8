#pragma once

#include <QByteArray>

#include <cstddef>
#include <optional>
#include <string>

#include "platform/link/wire/Bytes.h"

namespace Korvex3Sync::link {

/// The longest message.
inline constexpr std::size_t kMostMessageBytes = std::size_t{1} << 20U;

/// A message with its length in front, as it travels.
QByteArray Framed(const QByteArray& message);

/// Cuts a stream of bytes into messages.
class FrameReader {
public:
    void Append(const QByteArray& bytes);
    /// The next complete message, valid until the next call; nothing if it has not arrived yet.
    /// Nothing more comes after a length that no message can have: then `Fault` is not empty.
    std::optional<ByteSpan> Next();
    const std::string& Fault() const { return m_fault; }
    /// Whether a message has arrived in part.
    bool InMessage() const { return m_start < m_bytes.size(); }
    /// Limits the length of the messages that follow; kMostMessageBytes until then.
    void Limit(std::size_t mostBytes) { m_most = mostBytes; }

private:
    QByteArray m_bytes;
    int m_start = 0;
    std::size_t m_most = kMostMessageBytes;
    std::string m_fault;
};

}  // namespace Korvex3Sync::link
