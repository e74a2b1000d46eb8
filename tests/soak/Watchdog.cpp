#include "soak/Watchdog.h"

#include <cstdio>
#include <cstdlib>

#include "soak/Stacks.h"

namespace Korvex3Sync::tests::soak {
namespace {

constexpr std::array kNames{"scanner", "caller", "faults"};
constexpr std::chrono::milliseconds kLookEvery{200};

}  // namespace

Watchdog::Watchdog(std::chrono::seconds limit) : m_limit(limit), m_thread([this] { Run(); }) {}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(m_mutex);
        m_end = true;
        m_changed.notify_all();
    }
    m_thread.join();
}

void Watchdog::Run() {
    using Clock = std::chrono::steady_clock;
    struct Seen {
        unsigned long steps = 0;
        Clock::time_point since = Clock::now();
    };
    std::array<Seen, ThreadCount> seen;
    std::unique_lock lock(m_mutex);
    while (!m_changed.wait_for(lock, kLookEvery, [this] { return m_end; })) {
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const unsigned long steps = m_watched[i].m_steps;
            if (steps != seen[i].steps) {
                seen[i] = {steps, Clock::now()};
            } else if (Clock::now() - seen[i].since > m_limit) {
                Report();
            }
        }
    }
}

void Watchdog::Report() {
    std::fprintf(stderr, "soak: a thread made no progress for %lld s\n",
                 static_cast<long long>(m_limit.count()));
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        std::fprintf(stderr, "  %s: %s\n", kNames[i], m_watched[i].m_doing.load());
    }
    PrintAllStacks();
    std::abort();
}

}  // namespace Korvex3Sync::tests::soak
