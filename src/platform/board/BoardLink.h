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

/// How long a board may take for the reply to one command report, sending included.
inline constexpr std::chrono::milliseconds kReplyLimit{500};

/// One open board: sends commands and finds the reply to each. Nothing is sent twice. Thread-safe:
/// callers have their turns one after the other, and a turn lasts kReplyLimit at most for each
/// report until one fails. `m_turn` is held for a turn; Close takes no lock and ends a turn early.
class BoardLink {
public:
    struct Request {
        Command command;
        Payload payload;
    };

    explicit BoardLink(std::unique_ptr<ByteTransport> transport);
    /// Closes.
    ~BoardLink();
    BoardLink(const BoardLink&) = delete;
    BoardLink& operator=(const BoardLink&) = delete;

    /// Sends the requests in one turn, each after the reply to the one before. Their reply
    /// payloads, one each; nothing as soon as one fails: not sent, no good reply within the limit,
    /// a status other than Ok, or the link is closed. Replies that are damaged or belong to another
    /// command are skipped.
    std::optional<std::vector<Payload>> Exchange(std::span<const Request> requests);
    std::optional<Payload> Exchange(const Request& request);

    /// Closes the board; any thread, also while another is in Exchange, which then gives nothing
    /// soon. False when the board failed to close; it is closed all the same.
    bool Close();

private:
    std::optional<Payload> ExchangeOne(const Request& request) KORVEX_REQUIRES(m_turn);

    const std::unique_ptr<ByteTransport> m_transport;
    os::Mutex m_turn;
    std::uint16_t m_sequence KORVEX_GUARDED_BY(m_turn) = 0;
};

}  // namespace Korvex3Sync::board
