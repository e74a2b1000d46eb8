#pragma once

#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

#include "Korvex3Sync/Status.h"
#include "platform/link/wire/Bytes.h"

namespace Korvex3Sync::link {

/// Changes with every change of a message or an operation. Only equal versions talk to each other.
inline constexpr std::uint32_t kProtocolVersion = 1;

/// What a process is at its end of a connection.
enum class Role : std::uint8_t { Client = 1, Service = 2, Hub = 3 };

/// The name of a role for log lines.
const char* RoleName(Role role);

/// The first message of each end. Its layout is the same in all versions.
struct Hello {
    std::uint32_t version = kProtocolVersion;
    Role role = Role::Client;
    std::int64_t process = 0;
};

/// A request; `arguments` are the In tuple of the operation.
struct CallMessage {
    std::uint32_t number = 0;
    std::uint16_t operation = 0;
    QByteArray arguments;
};

/// The answer to the request with the same number. `results` are the Out tuple of the operation,
/// empty unless the status is STATUS_SUCCESS.
struct ReplyMessage {
    std::uint32_t number = 0;
    RETSTATUS status = STATUS_FAILED;
    QByteArray results;
};

/// What a service tells a client without being asked; the fields of a signal of SyncInterface.
struct Signal {
    enum class Kind : std::uint8_t { Message = 1, Callback = 2 };

    Kind kind = Kind::Message;
    QString pluginName;
    QString name;
    QVariantList list;
    QString version;
};

using Message = std::variant<Hello, CallMessage, ReplyMessage, Signal>;

/// The length of an encoded Hello. No other message may come first.
inline constexpr std::size_t kHelloBytes = 18;

/// The messages without the length in front.
QByteArray Encoded(const Hello& hello);
QByteArray Encoded(const CallMessage& call);
QByteArray Encoded(const ReplyMessage& reply);
QByteArray Encoded(const Signal& signal);

/// Nothing if the bytes are not exactly one message.
std::optional<Message> Decoded(ByteSpan bytes);

}  // namespace Korvex3Sync::link
