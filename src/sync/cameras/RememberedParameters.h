#pragma once

#include <map>
#include <vector>

namespace Korvex3Sync {

/// The values that the setters of exposure and gain were last called with, by camera order, so that
/// a reconnection can restore them. A value that was never set is not written.
struct RememberedParameters {
    std::map<int, double> exposures;
    std::map<int, int> gains;
};

/// The requested exposure and gain of one camera order.
struct OrderSetting {
    int order = 0;
    double exposure = 0.0;
    int gain = 0;
    bool operator==(const OrderSetting&) const = default;
};

/// The orders for which both values are remembered, in ascending order.
std::vector<OrderSetting> OrdersToRestore(const RememberedParameters& parameters);

}  // namespace Korvex3Sync
