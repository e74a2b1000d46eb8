#include "soak/Resources.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "support/ThreadCount.h"

// Where a sanitizer has taken the allocator over, it is the one to ask.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace Korvex3Sync::soak {
namespace {

constexpr std::size_t kWarmingUp = 3;
/// A thread that was joined may stand in the list of the system a little longer.
constexpr std::chrono::seconds kDeadline{20};
/// Buffers of logs and queues that grow to their bound late; a lost image set of each connection
/// would be past it in no time.
constexpr std::size_t kMostGrowth = std::size_t{4} << 20U;

}  // namespace

Resources Resources::Now() {
    Resources now;
    now.threads = support::ThreadCount();
    now.bytes = __sanitizer_get_current_allocated_bytes != nullptr
                    ? __sanitizer_get_current_allocated_bytes()
                    : mallinfo2().uordblks + mallinfo2().hblkhd;
    return now;
}

std::string ResourceWatch::Look() {
    m_last = Resources::Now();
    if (++m_looks <= kWarmingUp) {
        // The fewest threads: one that is about to go must hide none that stays.
        m_first = {m_looks == 1 ? m_last.threads : std::min(m_first.threads, m_last.threads),
                   std::max(m_first.bytes, m_last.bytes)};
        return "";
    }
    const auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (m_last.threads > m_first.threads && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        m_last = Resources::Now();
    }
    if (m_last.threads > m_first.threads) {
        return "threads grew from " + std::to_string(m_first.threads) + " to " +
               std::to_string(m_last.threads);
    }
    if (m_last.bytes > m_first.bytes + kMostGrowth) {
        return "memory grew from " + std::to_string(m_first.bytes) + " to " +
               std::to_string(m_last.bytes) + " bytes";
    }
    return "";
}

}  // namespace Korvex3Sync::soak
