#pragma once

#include <atomic>

namespace Korvex3Sync::korvexctl {

class Session;

/// Listens to the board's status, which keeps its heartbeat going, and remembers when the board
/// stops answering. Made before the session and bound to it, so that it outlives the callbacks.
class BoardWatch {
public:
    /// Throws CommandError(DeviceRefused).
    void Watch(const Session& session);
    /// Whether the last poll went unanswered.
    bool Lost() const { return m_lost; }

private:
    static void OnStatus(const void* const& context, const unsigned char& statusA,
                         const unsigned char& statusB);

    std::atomic<bool> m_lost{false};
    std::atomic<bool>* m_target = &m_lost;
};

}  // namespace Korvex3Sync::korvexctl
