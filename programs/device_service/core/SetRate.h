#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace Korvex3Sync::device_service {

/// How many sets there were in the last second, in steps of a tenth. Not thread-safe.
class SetRate {
public:
    using Time = std::chrono::steady_clock::time_point;

    void Count(Time now);
    /// Sets per second: those of the ten tenths that end with the current one.
    std::uint32_t PerSecond(Time now) const;

private:
    static constexpr std::size_t kTenths = 10;
    struct Tenth {
        std::int64_t number = -1;  // tenths since the clock's start
        std::uint32_t sets = 0;
    };

    std::array<Tenth, kTenths> m_tenths{};
};

}  // namespace Korvex3Sync::device_service
