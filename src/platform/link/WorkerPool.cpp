#include "platform/link/WorkerPool.h"

#include <utility>

#include "platform/link/channel/RunLogged.h"

namespace Korvex3Sync::link {

WorkerPool::~WorkerPool() {
    Close(std::chrono::steady_clock::now());
    std::vector<std::unique_ptr<os::Thread>> threads;
    {
        os::MutexGuard lock(m_mutex);
        threads.swap(m_threads);
    }
    for (const auto& thread : threads) {
        thread->Join();
    }
}

void WorkerPool::Post(Job job) {
    {
        os::MutexGuard lock(m_mutex);
        if (m_closed) {
            return;
        }
        m_jobs.push_back(std::move(job));
        if (m_jobs.size() > m_free && m_threads.size() < kMostThreads) {
            auto thread = std::make_unique<os::Thread>();
            if (thread->Start([this] { Run(); })) {
                m_threads.push_back(std::move(thread));
            }
        }
    }
    // Without the mutex, which the thread that wakes takes next.
    m_changed.NotifyOne();
}

bool WorkerPool::Close(std::chrono::steady_clock::time_point deadline) {
    os::MutexGuard lock(m_mutex);
    m_closed = true;
    m_jobs.clear();
    m_changed.NotifyAll();
    while (m_running > 0) {
        if (!m_changed.WaitUntil(m_mutex, deadline)) {
            return m_running == 0;
        }
    }
    return true;
}

void WorkerPool::Run() {
    os::MutexGuard lock(m_mutex);
    while (!m_closed) {
        if (m_jobs.empty()) {
            ++m_free;
            m_changed.Wait(m_mutex);
            --m_free;
            continue;
        }
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        ++m_running;
        {
            os::MutexRelease unlocked(m_mutex);
            RunLogged("A call of a client", job);
            job = nullptr;  // what it holds is released without the lock
        }
        --m_running;
        if (m_closed) {
            m_changed.NotifyAll();
        }
    }
}

}  // namespace Korvex3Sync::link
