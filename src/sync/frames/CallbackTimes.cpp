#include "sync/frames/CallbackTimes.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Korvex3Sync {

void CallbackTimes::Add(std::chrono::steady_clock::duration took) {
    const auto rounded = std::chrono::ceil<std::chrono::microseconds>(took).count();
    const auto time = static_cast<std::uint64_t>(std::max<std::int64_t>(rounded, 0));
    ++m_calls[ClassOf(time)];
    ++m_total;
    m_longest = std::max(m_longest, time);
}

std::uint64_t CallbackTimes::Percentile(double share) const {
    if (m_total == 0) {
        return 0;
    }
    const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(m_total)));
    std::uint64_t calls = 0;
    std::size_t timeClass = 0;
    while (timeClass < kCount - 1 && (calls += m_calls[timeClass]) < wanted) {
        ++timeClass;
    }
    return timeClass == kCount - 1 ? m_longest : std::min(LongestOf(timeClass), m_longest);
}

std::size_t CallbackTimes::ClassOf(std::uint64_t time) {
    const auto bits = static_cast<unsigned>(std::bit_width(time));
    if (bits <= kClassBits + 1) {
        return static_cast<std::size_t>(time);
    }
    const unsigned shift = bits - kClassBits - 1;
    return std::min(static_cast<std::size_t>(shift * kClasses + (time >> shift)), kCount - 1);
}

std::uint64_t CallbackTimes::LongestOf(std::size_t timeClass) {
    if (timeClass < 2 * kClasses) {
        return timeClass;
    }
    const auto shift = static_cast<unsigned>(timeClass / kClasses - 1);
    const std::uint64_t leading = timeClass - shift * kClasses;
    return ((leading + 1) << shift) - 1;
}

}  // namespace Korvex3Sync
