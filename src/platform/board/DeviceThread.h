#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::virtual_head {
class VirtualHead;
}

namespace Korvex3Sync::board {

/// Runs the virtual head's side of calls on a separate thread, one at a time, so that a hanging
/// head never blocks a caller beyond its time limit. The thread exists from Start to End.
/// Thread-safe, except for Start and End, which only the owner calls. `m_mutex` is never held while
/// a task runs.
class DeviceThread {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    using Task = std::function<void(virtual_head::VirtualHead&)>;

    explicit DeviceThread(std::weak_ptr<virtual_head::VirtualHead> head);
    /// Ends.
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    /// False if the thread cannot be started.
    bool Start();
    /// Passes a task to the thread when the previous one has ended. False if a fault of the head
    /// still holds the previous task at the deadline, or if the thread ends. `call` is the platform
    /// function that the task belongs to. The task is dropped if the head no longer exists.
    bool Give(const std::string& call, Task task, Deadline deadline);
    /// Waits until no task is left. False if a fault of the head still holds the task at the
    /// deadline. Give and WaitIdle wait up to 10 s longer for a task that no fault holds: it only
    /// lacks processor time, which is not a failure of the head.
    bool WaitIdle(Deadline deadline);
    /// Wakes the callers of Give, ends a hang or slowness of the running task and waits for the
    /// thread. Further calls do nothing.
    void End();

private:
    void Run();
    /// Waits for the previous task. True if it has ended or the thread ends.
    bool WaitForTask(Deadline deadline) KORVEX_REQUIRES(m_mutex);
    bool Held(const std::string& call) const;

    const std::weak_ptr<virtual_head::VirtualHead> m_head;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::string m_call KORVEX_GUARDED_BY(m_mutex);
    Task m_task KORVEX_GUARDED_BY(m_mutex);
    bool m_busy KORVEX_GUARDED_BY(m_mutex) = false;  // from Give until the task has ended
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::board
