// Any bytes as the stream of a peer of the link: frames, messages, and the arguments and results of
// every operation. What is decoded says the same when it is encoded and decoded again.

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <variant>

#include "link/WireSamples.h"
#include "platform/link/wire/Frames.h"
#include "platform/link/wire/Messages.h"

namespace k3link = Korvex3Sync::link;
using Korvex3Sync::tests::ForEachOperation;
using Korvex3Sync::tests::WireBytes;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

QByteArray Copied(k3link::ByteSpan bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())};
}

template <class T>
void CheckValue(const QByteArray& bytes) {
    T value{};
    if (k3link::ReadWhole(k3link::SpanOf(bytes), value)) {
        Require(WireBytes(value) == bytes);
    }
}

void CheckMessage(const QByteArray& bytes) {
    const auto message = k3link::Decoded(k3link::SpanOf(bytes));
    if (!message) {
        return;
    }
    Require(std::visit([](const auto& one) { return k3link::Encoded(one); }, *message) == bytes);
    if (const auto* const call = std::get_if<k3link::CallMessage>(&*message)) {
        ForEachOperation([call]<class Op>() {
            if (call->operation == Op::kNumber) {
                CheckValue<typename Op::In>(call->arguments);
            }
        });
    } else if (const auto* const reply = std::get_if<k3link::ReplyMessage>(&*message)) {
        ForEachOperation([reply]<class Op>() { CheckValue<typename Op::Out>(reply->results); });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    // The first byte says in which pieces the others arrive.
    const int piece = 1 + data[0];
    const QByteArray stream(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    k3link::FrameReader frames;
    QByteArray taken;
    for (int i = 0; i < stream.size(); i += piece) {
        frames.Append(stream.mid(i, piece));
        while (const auto message = frames.Next()) {
            Require(!message->empty() && message->size() <= k3link::kMostMessageBytes);
            const QByteArray copy = Copied(*message);
            taken += k3link::Framed(copy);
            CheckMessage(copy);
        }
    }
    Require(stream.startsWith(taken));
    Require(!frames.Fault().empty() || frames.InMessage() == (taken.size() < stream.size()));
    return 0;
}
