#include "platform/link/wire/Messages.h"

#include "platform/link/wire/Values.h"

namespace Korvex3Sync::link {
namespace {

constexpr std::uint32_t kMagic = 0x4B33534C;

enum class Type : std::uint8_t { Hello = 1, Call = 2, Reply = 3, Signal = 4 };

ByteWriter Started(Type type) {
    ByteWriter out;
    out.Number(static_cast<std::uint8_t>(type));
    return out;
}

QByteArray RestOf(const ByteReader& in) {
    const ByteSpan rest = in.Rest();
    return {reinterpret_cast<const char*>(rest.data()), static_cast<int>(rest.size())};
}

std::optional<Message> DecodedHello(ByteReader& in) {
    Hello hello;
    std::uint32_t magic = 0;
    std::uint8_t role = 0;
    const bool whole = in.Number(magic) && magic == kMagic && in.Number(hello.version) &&
                       in.Number(role) && Read(in, hello.process) && in.Left() == 0;
    if (!whole || role < static_cast<std::uint8_t>(Role::Client) ||
        role > static_cast<std::uint8_t>(Role::Hub)) {
        return std::nullopt;
    }
    hello.role = static_cast<Role>(role);
    return hello;
}

std::optional<Message> DecodedCall(ByteReader& in) {
    CallMessage call;
    if (!in.Number(call.number) || !in.Number(call.operation)) {
        return std::nullopt;
    }
    call.arguments = RestOf(in);
    return call;
}

std::optional<Message> DecodedReply(ByteReader& in) {
    ReplyMessage reply;
    if (!in.Number(reply.number) || !Read(in, reply.status)) {
        return std::nullopt;
    }
    if (reply.status != STATUS_SUCCESS && in.Left() != 0) {
        return std::nullopt;
    }
    reply.results = RestOf(in);
    return reply;
}

std::optional<Message> DecodedSignal(ByteReader& in) {
    Signal signal;
    std::uint8_t kind = 0;
    const bool whole = in.Number(kind) && Read(in, signal.pluginName) && Read(in, signal.name) &&
                       Read(in, signal.list) && Read(in, signal.version) && in.Left() == 0;
    if (!whole || kind < static_cast<std::uint8_t>(Signal::Kind::Message) ||
        kind > static_cast<std::uint8_t>(Signal::Kind::Callback)) {
        return std::nullopt;
    }
    signal.kind = static_cast<Signal::Kind>(kind);
    return signal;
}

}  // namespace

const char* RoleName(Role role) {
    switch (role) {
        case Role::Client:
            return "client";
        case Role::Service:
            return "service";
        case Role::Hub:
            return "hub";
    }
    return "unknown";
}

QByteArray Encoded(const Hello& hello) {
    ByteWriter out = Started(Type::Hello);
    out.Number(kMagic);
    out.Number(hello.version);
    out.Number(static_cast<std::uint8_t>(hello.role));
    Write(out, hello.process);
    return out.Bytes();
}

QByteArray Encoded(const CallMessage& call) {
    ByteWriter out = Started(Type::Call);
    out.Number(call.number);
    out.Number(call.operation);
    out.Append(call.arguments);
    return out.Bytes();
}

QByteArray Encoded(const ReplyMessage& reply) {
    ByteWriter out = Started(Type::Reply);
    out.Number(reply.number);
    Write(out, reply.status);
    out.Append(reply.results);
    return out.Bytes();
}

QByteArray Encoded(const Signal& signal) {
    ByteWriter out = Started(Type::Signal);
    out.Number(static_cast<std::uint8_t>(signal.kind));
    Write(out, signal.pluginName);
    Write(out, signal.name);
    Write(out, signal.list);
    Write(out, signal.version);
    return out.Bytes();
}

std::optional<Message> Decoded(ByteSpan bytes) {
    ByteReader in(bytes);
    std::uint8_t type = 0;
    if (!in.Number(type)) {
        return std::nullopt;
    }
    switch (static_cast<Type>(type)) {
        case Type::Hello:
            return DecodedHello(in);
        case Type::Call:
            return DecodedCall(in);
        case Type::Reply:
            return DecodedReply(in);
        case Type::Signal:
            return DecodedSignal(in);
    }
    return std::nullopt;
}

}  // namespace Korvex3Sync::link
