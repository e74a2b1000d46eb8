#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace guide {

/// Keeps the latest state that the status callback reported.
class BoardWatch {
public:
    /// The status callback; its context is the watch.
    static void OnStatus(const void* const& context, const unsigned char& statusA,
                         const unsigned char& statusB) {
        auto* const watch = static_cast<BoardWatch*>(const_cast<void*>(context));
        const std::lock_guard lock(watch->m_mutex);
        watch->m_silent = statusA == 255 && statusB == 255;
        if (!watch->m_silent) {
            ++watch->m_goodPolls;
        }
        watch->m_told.notify_all();
    }

    /// True if the board did not answer the latest poll.
    bool Silent() const {
        const std::lock_guard lock(m_mutex);
        return m_silent;
    }

    /// Waits for the next good poll; false if there was none in time.
    bool WaitForGoodPoll(std::chrono::milliseconds patience) {
        std::unique_lock lock(m_mutex);
        const auto seen = m_goodPolls;
        return m_told.wait_for(lock, patience, [&] { return m_goodPolls != seen; });
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_told;
    bool m_silent = false;
    unsigned long m_goodPolls = 0;
};

}  // namespace guide
