#include "platform/board/BoardLink.h"

#include <glog/logging.h>

#include <utility>
#include <variant>

#include "platform/os/Clock.h"

namespace Korvex3Sync::board {

BoardLink::BoardLink(std::unique_ptr<ByteTransport> transport, std::uint16_t before)
    : m_transport(std::move(transport)), m_sequence(before) {}

BoardLink::~BoardLink() {
    Close();
}

std::optional<std::vector<Payload>> BoardLink::Exchange(std::span<const Request> requests) {
    os::MutexGuard turn(m_turn);
    std::vector<Payload> replies;
    for (const Request& request : requests) {
        const auto reply = ExchangeOne(request);
        if (!reply) {
            return std::nullopt;
        }
        replies.push_back(*reply);
    }
    return replies;
}

std::optional<Payload> BoardLink::Exchange(const Request& request) {
    os::MutexGuard turn(m_turn);
    return ExchangeOne(request);
}

bool BoardLink::Close() {
    return m_transport->Close();
}

std::optional<Payload> BoardLink::ExchangeOne(const Request& request) {
    if (m_transport->Closed()) {
        return std::nullopt;
    }
    const auto deadline = std::chrono::steady_clock::now() + os::Scaled(kReplyLimit);
    const std::uint16_t sequence = ++m_sequence;
    if (!m_transport->Send(EncodeCommand({request.command, sequence, request.payload}), deadline)) {
        return std::nullopt;
    }
    do {
        const auto received = m_transport->Receive(deadline);
        if (!received) {
            return std::nullopt;
        }
        const auto decoded = DecodeReply(received->Bytes(), request.command, sequence);
        if (const auto* const reply = std::get_if<ReplyMessage>(&decoded)) {
            return reply->status == Status::Ok ? std::optional(reply->payload) : std::nullopt;
        }
        LOG(WARNING) << "Board: a reply was skipped: " << RefusalText(std::get<Refusal>(decoded));
    } while (std::chrono::steady_clock::now() < deadline);
    return std::nullopt;
}

}  // namespace Korvex3Sync::board
