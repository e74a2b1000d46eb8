#pragma once

#include <chrono>
#include <functional>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::device_service {

/// Hands each status of the board on at once, and repeats the last one every 50 ms as long as the
/// polls are fresh. So silence of 200 ms means that the board is not being polled any more, and not
/// that one poll took longer than another.
///
/// `send` is called with the lock held, on the status thread and on the repeating thread; it must
/// not wait.
class StatusRepeater {
public:
    using Send = std::function<void(unsigned char statusA, unsigned char statusB)>;

    explicit StatusRepeater(Send send);
    /// Ends.
    ~StatusRepeater();
    StatusRepeater(const StatusRepeater&) = delete;
    StatusRepeater& operator=(const StatusRepeater&) = delete;

    /// False if the system provides no thread.
    bool Start();

    /// A poll of the board. Before Begin it is ignored.
    void Polled(unsigned char statusA, unsigned char statusB);
    /// The polls have a callback from now on. The next status comes with the fifth poll; meanwhile
    /// a fresh one is repeated.
    void Begin();
    /// After this nothing is sent.
    void Stop();

private:
    using Time = std::chrono::steady_clock::time_point;

    void Repeat();

    const Send m_send;
    os::Mutex m_mutex;
    os::Condition m_changed;
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_on KORVEX_GUARDED_BY(m_mutex) = false;
    unsigned char m_statusA KORVEX_GUARDED_BY(m_mutex) = 0;
    unsigned char m_statusB KORVEX_GUARDED_BY(m_mutex) = 0;
    Time m_freshUntil KORVEX_GUARDED_BY(m_mutex);
    Time m_next KORVEX_GUARDED_BY(m_mutex);
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::device_service
