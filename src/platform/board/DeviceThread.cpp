#include "platform/board/DeviceThread.h"

#include <utility>

#include "platform/os/Clock.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::board {
namespace {

// A task may be about to hang when its hang is ended, so ending is repeated.
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
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_until(lock, deadline, [this] { return !m_busy || m_end; }) || m_end) {
        return false;
    }
    m_call = call;
    m_task = std::move(task);
    m_busy = true;
    m_changed.notify_all();
    return true;
}

bool DeviceThread::WaitIdle(Deadline deadline) {
    std::unique_lock lock(m_mutex);
    const auto idle = [this] { return !m_busy; };
    if (m_changed.wait_until(lock, deadline, idle)) {
        return true;
    }
    const Deadline last = std::chrono::steady_clock::now() + kGrace;
    while (m_busy && std::chrono::steady_clock::now() < last) {
        const std::string call = m_call;
        lock.unlock();
        const bool held = Held(call);
        lock.lock();
        if (held) {
            break;
        }
        m_changed.wait_for(lock, kLookEvery, idle);
    }
    return !m_busy;
}

bool DeviceThread::Held(const std::string& call) const {
    const auto head = m_head.lock();
    return !head || head->GetFaults().Holds(call);
}

void DeviceThread::End() {
    std::unique_lock lock(m_mutex);
    m_end = true;
    m_changed.notify_all();
    while (m_busy && m_thread.Started()) {
        if (const auto head = m_head.lock()) {
            const std::string call = m_call;
            lock.unlock();
            head->GetFaults().ReleaseHangs(call);
            lock.lock();
        }
        m_changed.wait_for(lock, os::Scaled(kReleaseEvery), [this] { return !m_busy; });
    }
    lock.unlock();
    m_thread.Join();
}

void DeviceThread::Run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_busy || m_end; });
        if (!m_busy) {
            return;
        }
        const Task task = std::move(m_task);
        lock.unlock();
        if (const auto head = m_head.lock()) {
            task(*head);
        }
        lock.lock();
        m_busy = false;
        m_changed.notify_all();
    }
}

}  // namespace Korvex3Sync::board
