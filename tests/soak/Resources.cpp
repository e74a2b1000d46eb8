#include "soak/Resources.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

#include "support/ThreadState.h"

// Where a sanitizer has taken the allocator over, it is the one to ask.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace Korvex3Sync::tests::soak {
namespace {

constexpr std::size_t kWarmingUp = 3;
/// A thread that was joined may stand in the list of the system a little longer.
constexpr std::chrono::seconds kSettleDeadline{20};
/// What queues and tables that grow to their bound late may take: runs of a quarter of a minute
/// were seen to grow by 29 KB at most. Some forty lost image sets (6 KiB of three images) are past
/// it.
constexpr std::size_t kMostGrowth = std::size_t{256} << 10U;

/// With the one that reads the list, which is there each time.
std::size_t FileCount() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

std::string Grown(const char* what, std::size_t from, std::size_t to) {
    return std::string(what) + " grew from " + std::to_string(from) + " to " + std::to_string(to);
}

}  // namespace

Resources Resources::Now() {
    Resources now;
    now.threads = support::ThreadCount();
    now.files = FileCount();
    now.bytes = __sanitizer_get_current_allocated_bytes != nullptr
                    ? __sanitizer_get_current_allocated_bytes()
                    : mallinfo2().uordblks + mallinfo2().hblkhd;
    return now;
}

std::string ResourceWatch::Look() {
    m_last = Resources::Now();
    if (++m_looks <= kWarmingUp) {
        // The fewest threads: one that is about to go must hide none that stays.
        const bool begins = m_looks == 1;
        m_first.threads = begins ? m_last.threads : std::min(m_first.threads, m_last.threads);
        m_first.files = std::max(m_first.files, m_last.files);
        m_first.bytes = std::max(m_first.bytes, m_last.bytes);
        return "";
    }
    const auto deadline = std::chrono::steady_clock::now() + kSettleDeadline;
    while (m_last.threads > m_first.threads && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        m_last = Resources::Now();
    }
    if (m_last.threads > m_first.threads) {
        return Grown("threads", m_first.threads, m_last.threads);
    }
    if (m_last.files > m_first.files) {
        return Grown("open files", m_first.files, m_last.files);
    }
    if (m_last.bytes > m_first.bytes + kMostGrowth) {
        return Grown("bytes in use", m_first.bytes, m_last.bytes);
    }
    return "";
}

}  // namespace Korvex3Sync::tests::soak
