#pragma once

#include <array>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

/// Exposure and gain of one camera order.
struct SensorSetting {
    long exposure = 5000;  // microseconds
    int gain = 0;
};

/// Exposure and gain of the head's camera orders, and which of them is selected. They belong to the
/// head: every camera instance sees the same. Thread-safe; nothing blocks.
class KORVEX_VIRTUAL_HEAD_API SensorSettings {
public:
    static constexpr int kOrders = 4;
    /// Limits of the exposure, in microseconds.
    static constexpr long kShortestExposure = 1;
    static constexpr long kLongestExposure = 1000000;

    explicit SensorSettings(const HeadDescription& description);

    /// False for an order that is not 0 to 3.
    bool SelectOrder(int order);
    /// Selects the order and sets both values; false, with nothing changed, when one is out of
    /// range.
    bool SelectAndSet(int order, long exposureMicroseconds, int gain);
    /// Of the selected order; false when out of range.
    bool SetExposure(long microseconds);
    long Exposure() const;
    bool SetGain(int gain);
    int Gain() const;
    int SelectedOrder() const;
    /// Everything is as it was at first.
    void PowerOff();
    /// Of the two sensors: order 0 is the left one, order 1 the right one.
    std::array<SensorSetting, 2> Sensors() const;

private:
    bool GainInRange(int gain) const { return gain >= m_gainLow && gain <= m_gainHigh; }
    static bool ExposureInRange(long microseconds) {
        return microseconds >= kShortestExposure && microseconds <= kLongestExposure;
    }
    static bool OrderInRange(int order) { return order >= 0 && order < kOrders; }

    const int m_gainLow;
    const int m_gainHigh;
    mutable os::Mutex m_mutex;
    std::array<SensorSetting, kOrders> m_settings KORVEX_GUARDED_BY(m_mutex){};
    std::size_t m_selected KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
