#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::link {

/// Threads that run jobs. A job gets a new thread if all threads are busy, up to a limit, so that a
/// slow job delays no other.
class WorkerPool {
public:
    using Job = std::function<void()>;
    static constexpr std::size_t kMostThreads = 16;

    /// Waits without limit for the jobs that are running.
    ~WorkerPool();

    /// Any thread. A job that is posted after Close is dropped.
    void Post(Job job);
    /// Drops the jobs that wait and waits for those that run. False if one still runs at the (real)
    /// deadline.
    bool Close(std::chrono::steady_clock::time_point deadline);

private:
    void Run();

    os::Mutex m_mutex;
    os::Condition m_changed;
    std::deque<Job> m_jobs KORVEX_GUARDED_BY(m_mutex);
    std::vector<std::unique_ptr<os::Thread>> m_threads KORVEX_GUARDED_BY(m_mutex);
    std::size_t m_free KORVEX_GUARDED_BY(m_mutex) = 0;  // threads that wait for a job
    std::size_t m_running KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_closed KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync::link
