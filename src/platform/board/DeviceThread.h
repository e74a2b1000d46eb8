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

/// Runs the virtual head's side of calls on a thread of its own, one at a time, so that a head that
/// hangs never holds a caller beyond its limit. The thread lives from Start to End. Thread-safe but
/// for Start and End, which belong to the owner. `m_mutex` is never
/// held while a task runs.
class DeviceThread {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    using Task = std::function<void(virtual_head::VirtualHead&)>;

    explicit DeviceThread(std::weak_ptr<virtual_head::VirtualHead> head);
    /// Ends.
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    /// False when the system gives no thread.
    bool Start();
    /// Hands a task over when the one before has ended. False when a fault of the head holds that
    /// one at the deadline, or when the thread ends. `call` is the platform function that the task
    /// serves. A task is dropped when the head is gone.
    bool Give(const std::string& call, Task task, Deadline deadline);
    /// Waits until no task is left; false at the deadline when a fault of the head holds the task.
    /// Both wait up to 10 s longer for a task that no fault holds: it only lacks processor time,
    /// which is the machine's doing and not the head's.
    bool WaitIdle(Deadline deadline);
    /// Wakes who waits in Give, ends the hang of a task that hangs, waits for the thread. Blocks as
    /// long as the running task is slowed. Any further call does nothing.
    void End();

private:
    void Run();
    /// True when the task before has ended or the thread ends.
    bool WaitForTask(Deadline deadline) KORVEX_REQUIRES(m_mutex);
    bool Held(const std::string& call) const;

    const std::weak_ptr<virtual_head::VirtualHead> m_head;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::string m_call KORVEX_GUARDED_BY(m_mutex);
    Task m_task KORVEX_GUARDED_BY(m_mutex);
    bool m_busy KORVEX_GUARDED_BY(m_mutex) = false;  // from the giving of a task to its end
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::board
