#pragma once

#include <functional>
#include <memory>

namespace Korvex3Sync::os {

/// A thread with one owner. The owner tells it to end, then joins it; the destructor joins. It
/// cannot be cancelled (`pthread_cancel`).
class Thread {
public:
    Thread();
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// False if the system provides no thread or no memory, or if one is already running.
    bool Start(std::function<void()> procedure);
    /// Waits without limit for the end of the procedure and forgets the thread. A thread that joins
    /// itself is detached instead.
    void Join();
    bool Started() const;
    /// For log lines: null without a thread.
    const void* Handle() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace Korvex3Sync::os
