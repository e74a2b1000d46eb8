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

/// Exposure and gain of the head's camera orders, and the selected order. All camera instances
/// share them. Thread-safe; does not block.
class KORVEX_VIRTUAL_HEAD_API SensorSettings {
public:
    static constexpr int kOrders = 4;
    /// Limits of the exposure, in microseconds.
    static constexpr long kShortestExposure = 1;
    static constexpr long kLongestExposure = 1000000;

    explicit SensorSettings(const HeadDescription& description);

    /// False for an order outside 0 to 3.
    bool SelectOrder(int order);
    /// Selects the order and sets both values. If one is out of range, returns false and changes
    /// nothing.
    bool SelectAndSet(int order, long exposureMicroseconds, int gain);
    /// For the selected order; false if out of range.
    bool SetExposure(long microseconds);
    long Exposure() const;
    bool SetGain(int gain);
    int Gain() const;
    int SelectedOrder() const;
    /// Restores the initial state.
    void PowerOff();
    /// The settings of the two sensors: order 0 is the left one, order 1 the right one.
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
