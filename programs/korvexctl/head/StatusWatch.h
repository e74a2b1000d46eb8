#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>

#include "korvexctl/head/CallbackContext.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

class Session;

/// The two status bytes of the board.
struct BoardStatus {
    unsigned char a = 0;
    unsigned char b = 0;

    /// The pair that means a poll without an answer.
    static BoardStatus NoAnswer();
    /// False for the pair that means a poll without an answer.
    bool Answers() const;
    bool operator==(const BoardStatus&) const = default;
};

/// Passes the polls of the board's status from the library's status thread to the command. Watching
/// the status also keeps the board's heartbeat on. Made before the session and bound to it, so that
/// it outlives the callbacks.
class StatusWatch {
public:
    struct Poll {
        std::chrono::system_clock::time_point time;
        BoardStatus status;
    };
    using Deadline = std::chrono::steady_clock::time_point;

    /// Throws CommandError(DeviceRefused).
    void Watch(const Session& session);
    /// Whether the last poll went unanswered. Any thread.
    bool Lost() const;
    /// The oldest poll that was not fetched yet; waits for one until `end`, or without limit. Empty
    /// when there is none in time, or after Stop.
    std::optional<Poll> Next(std::optional<Deadline> end);
    /// Waits until the board has answered a poll. False at `end` or after Stop.
    bool WaitForAnswer(Deadline end);
    /// Drops the polls that were not fetched.
    void Forget();
    /// Ends a wait, and all that follow. Any thread.
    void Stop();

private:
    static void OnStatus(const void* const& context, const unsigned char& statusA,
                         const unsigned char& statusB);
    void Add(const Poll& poll);

    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::deque<Poll> m_polls KORVEX_GUARDED_BY(m_mutex);
    bool m_lost KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_stopped KORVEX_GUARDED_BY(m_mutex) = false;
    CallbackContext<StatusWatch> m_context{*this};
};

}  // namespace Korvex3Sync::korvexctl
