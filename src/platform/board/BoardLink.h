#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/board/ByteTransport.h"
#include "platform/board/protocol/Codec.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::board {

/// The time limit for one command report: sending it and receiving its reply.
inline constexpr std::chrono::milliseconds kReplyLimit{500};

/// One open board: sends commands and receives their replies. Never repeats a command. Thread-safe:
/// callers take turns. A turn takes at most kReplyLimit per report and ends with the first report
/// that fails. `m_turn` is held during a turn; Close takes no lock and ends a turn early.
class BoardLink {
public:
    struct Request {
        Command command;
        Payload payload;
    };

    /// `before` is the number before that of the first command. Users of a board begin at random
    /// numbers, so that none takes a reply for its own that the board gave to another.
    explicit BoardLink(std::unique_ptr<ByteTransport> transport, std::uint16_t before = 0);
    /// Closes.
    ~BoardLink();
    BoardLink(const BoardLink&) = delete;
    BoardLink& operator=(const BoardLink&) = delete;

    /// Sends the requests in one turn, each after the reply to the previous one, and returns the
    /// payload of each reply. Returns nothing as soon as one fails: not sent, no good reply within
    /// the limit, a status other than Ok, or the link closed. Replies that are damaged or belong to
    /// another command are skipped.
    std::optional<std::vector<Payload>> Exchange(std::span<const Request> requests);
    std::optional<Payload> Exchange(const Request& request);

    /// Closes the board. Any thread, also while another one is in Exchange, which then soon returns
    /// nothing. False if the board failed to close; the link is closed anyway.
    bool Close();

private:
    std::optional<Payload> ExchangeOne(const Request& request) KORVEX_REQUIRES(m_turn);

    const std::unique_ptr<ByteTransport> m_transport;
    os::Mutex m_turn;
    std::uint16_t m_sequence KORVEX_GUARDED_BY(m_turn);
};

}  // namespace Korvex3Sync::board
