#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

#include "soak/SoakHead.h"
#include "soak/Watchdog.h"

namespace Korvex3Sync::tests::soak {

/// Calls random exports with random arguments, valid and invalid, until told to stop.
class RandomCalls {
public:
    RandomCalls(SoakHead& head, std::uint64_t seed) : m_head(head), m_seed(seed) {}

    void Run(const std::atomic<bool>& stop, Watchdog::Watched& watched);

    /// How often each export was called. After Run.
    const std::map<std::string, unsigned long>& Counts() const { return m_counts; }

private:
    SoakHead& m_head;
    const std::uint64_t m_seed;
    std::map<std::string, unsigned long> m_counts;
};

}  // namespace Korvex3Sync::tests::soak
