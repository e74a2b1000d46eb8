#include "platform/board/DeviceThread.h"

#include <algorithm>
#include <utility>

#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::board {
namespace {

// A task may begin to hang just after its hang was ended, so this is repeated.
constexpr std::chrono::milliseconds kReleaseEvery{10};
constexpr std::chrono::milliseconds kLookEvery{10};
constexpr std::chrono::seconds kGrace{10};

}  // namespace

DeviceThread::DeviceThread(std::weak_ptr<virtual_head::VirtualHead> head)
    : m_head(std::move(head)) {}

DeviceThread::~DeviceThread() {
    End();
}

bool DeviceThread::Start() {
    return m_thread.Start([this] { Run(); });
}

bool DeviceThread::Give(const std::string& call, Task task, Deadline deadline) {
    os::MutexGuard lock(m_mutex);
    if (!WaitForTask(deadline) || m_end) {
        return false;
    }
    m_call = call;
    m_task = std::move(task);
    m_busy = true;
    m_changed.NotifyAll();
    return true;
}

bool DeviceThread::WaitIdle(Deadline deadline) {
    os::MutexGuard lock(m_mutex);
    return WaitForTask(deadline) && !m_busy;
}

bool DeviceThread::WaitForTask(Deadline deadline) {
    const Deadline last = std::max(deadline, std::chrono::steady_clock::now()) + kGrace;
    while (m_busy && !m_end) {
        if (m_changed.WaitUntil(m_mutex, deadline)) {
            continue;
        }
        const std::string call = m_call;
        bool held = false;
        {
            os::MutexRelease unlocked(m_mutex);
            held = Held(call);
        }
        const Deadline now = std::chrono::steady_clock::now();
        if (held || now >= last) {
            break;
        }
        deadline = now + kLookEvery;
    }
    return !m_busy || m_end;
}

bool DeviceThread::Held(const std::string& call) const {
    const auto head = m_head.lock();
    return !head || head->GetFaults().Holds(call);
}

void DeviceThread::End() {
    {
        os::MutexGuard lock(m_mutex);
        m_end = true;
        m_changed.NotifyAll();
        while (m_busy && m_thread.Started()) {
            if (const auto head = m_head.lock()) {
                const std::string call = m_call;
                os::MutexRelease unlocked(m_mutex);
                head->GetFaults().ReleaseHangs(call);
            }
            if (m_busy) {
                m_changed.WaitUntil(m_mutex, std::chrono::steady_clock::now() + kReleaseEvery);
            }
        }
    }
    m_thread.Join();
}

void DeviceThread::Run() {
    os::MutexGuard lock(m_mutex);
    while (true) {
        while (!m_busy && !m_end) {
            m_changed.Wait(m_mutex);
        }
        if (!m_busy) {
            return;
        }
        const Task task = std::move(m_task);
        {
            os::MutexRelease unlocked(m_mutex);
            if (const auto head = m_head.lock()) {
                task(*head);
            }
        }
        m_busy = false;
        m_changed.NotifyAll();
    }
}

}  // namespace Korvex3Sync::board
