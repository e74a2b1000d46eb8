#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

namespace Korvex3Sync::korvexctl {

class Session;

/// The two status bytes of the board.
struct BoardStatus {
    unsigned char a = 0;
    unsigned char b = 0;

    /// The pair that stands for a poll without answer.
    static BoardStatus NoAnswer();
    /// False for the pair that stands for a poll without answer.
    bool Answers() const;
    bool operator==(const BoardStatus&) const = default;
};

/// Hands the polls of the board's status over from the library's status thread to the command. Made
/// before the session and bound to it, so that it outlives the callbacks.
class StatusWatch {
public:
    struct Poll {
        std::chrono::system_clock::time_point time;
        BoardStatus status;
    };

    /// Throws CommandError(DeviceRefused).
    void Watch(const Session& session);
    /// The oldest poll that was not fetched yet; waits for one until `end`, if there is an end.
    /// Empty when there is none in time, or after Stop.
    std::optional<Poll> Next(std::optional<std::chrono::steady_clock::time_point> end);
    /// Forgets the polls that were not fetched.
    void Forget();
    /// Ends a wait, and all that follow. Any thread.
    void Stop();

private:
    static void OnStatus(const void* const& context, const unsigned char& statusA,
                         const unsigned char& statusB);
    void Add(const Poll& poll);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Poll> m_polls;
    bool m_stopped = false;
    StatusWatch* m_self = this;
};

}  // namespace Korvex3Sync::korvexctl
