#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "soak/Watchdog.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests::soak {

/// Orders faults of the virtual head at random, until told to stop.
class Chaos {
public:
    Chaos(std::shared_ptr<virtual_head::VirtualHead> head, std::uint64_t seed)
        : m_head(std::move(head)), m_seed(seed) {}

    /// The head has a thread for faults that last from the first of them on. Before the first
    /// measure, so that it is no growth.
    void WarmUp();
    void Run(const std::atomic<bool>& stop, Watchdog::Watched& watched);

    /// Held by whoever needs a head without faults; made with a look around: what is ordered is
    /// forgotten, what is gone comes back.
    class Calm {
    public:
        explicit Calm(Chaos& chaos);

    private:
        std::unique_lock<std::mutex> m_lock;
    };

    /// How often each fault was ordered. After Run.
    const std::map<std::string, unsigned long>& Counts() const { return m_counts; }

private:
    const std::shared_ptr<virtual_head::VirtualHead> m_head;
    const std::uint64_t m_seed;
    std::mutex m_mutex;
    std::map<std::string, unsigned long> m_counts;
};

}  // namespace Korvex3Sync::tests::soak
