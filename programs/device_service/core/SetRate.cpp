#include "device_service/core/SetRate.h"

namespace Korvex3Sync::device_service {

namespace {

std::int64_t TenthOf(SetRate::Time now) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() /
           100;
}

}  // namespace

void SetRate::Count(Time now) {
    const std::int64_t number = TenthOf(now);
    Tenth& tenth = m_tenths[static_cast<std::size_t>(number) % kTenths];
    if (tenth.number != number) {
        tenth = {number, 0};
    }
    ++tenth.sets;
}

std::uint32_t SetRate::PerSecond(Time now) const {
    const std::int64_t newest = TenthOf(now);
    std::uint32_t sets = 0;
    for (const Tenth& tenth : m_tenths) {
        if (tenth.number > newest - static_cast<std::int64_t>(kTenths)) {
            sets += tenth.sets;
        }
    }
    return sets;
}

}  // namespace Korvex3Sync::device_service
