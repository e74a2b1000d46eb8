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

    /// Makes the head start its thread for lasting faults. Call it before the first measurement, so
    /// that the thread does not count as growth.
    void WarmUp();
    void Run(const std::atomic<bool>& stop, Watchdog::Watched& watched);

    /// Keeps the head free of faults while it exists. The constructor cancels all orders and brings
    /// back what is gone.
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
