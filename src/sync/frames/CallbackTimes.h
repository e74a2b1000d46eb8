#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Korvex3Sync {

/// How long the calls of a callback took: a histogram of fixed size. Its classes grow with the
/// time, so a time read from it is at most 1/32 above the true one. It allocates nothing. It has no
/// lock: the owner's lock guards it.
class CallbackTimes {
public:
    /// Adds a call, in whole microseconds, rounded up. A negative time counts as 0.
    void Add(std::chrono::steady_clock::duration took);
    /// The time that this share of the calls (above 0, at most 1) did not exceed, in microseconds;
    /// 0 if there was no call.
    std::uint64_t Percentile(double share) const;
    /// Exact, in microseconds.
    std::uint64_t Longest() const { return m_longest; }

private:
    // Each time below 2 x kClasses has its own class; above, each doubling is divided into
    // kClasses.
    static constexpr unsigned kClassBits = 5;
    static constexpr std::uint64_t kClasses = 1U << kClassBits;
    static constexpr unsigned kTimeBits = 40;  // 12 days; longer times count in the last class
    static constexpr std::size_t kCount = (kTimeBits - kClassBits + 1) * kClasses;

    static std::size_t ClassOf(std::uint64_t time);
    static std::uint64_t LongestOf(std::size_t timeClass);

    std::array<std::uint64_t, kCount> m_calls{};
    std::uint64_t m_total = 0;
    std::uint64_t m_longest = 0;
};

}  // namespace Korvex3Sync
