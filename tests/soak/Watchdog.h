#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Korvex3Sync::tests::soak {

/// Ends the program if one of the watched threads makes no progress within the limit. Prints the
/// stacks of all threads first.
class Watchdog {
public:
    /// What a thread is doing, for the report.
    class Watched {
    public:
        /// `doing` is a text that lives as long as the program.
        void Doing(const char* doing) {
            m_doing = doing;
            ++m_steps;
        }

    private:
        friend class Watchdog;
        std::atomic<const char*> m_doing{"starts"};
        std::atomic<unsigned long> m_steps{0};
    };

    enum Thread { Scanner, Caller, FaultThread, ThreadCount };

    explicit Watchdog(std::chrono::seconds limit);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    Watched& Of(Thread thread) { return m_watched[thread]; }

private:
    void Run();
    [[noreturn]] void Report();

    const std::chrono::seconds m_limit;
    std::array<Watched, ThreadCount> m_watched;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_end = false;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::tests::soak
