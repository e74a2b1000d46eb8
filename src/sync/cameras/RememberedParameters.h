#pragma once

#include <map>
#include <vector>

namespace Korvex3Sync {

/// What the setters of exposure and gain were last asked for, by camera order, so that a
/// reconnection can bring the cameras back to their state. What was never set is not written.
struct RememberedParameters {
    std::map<int, double> exposures;
    std::map<int, int> gains;
};

/// Exposure and gain that were set for one camera order.
struct OrderSetting {
    int order = 0;
    double exposure = 0.0;
    int gain = 0;
    bool operator==(const OrderSetting&) const = default;
};

/// The orders for which both were remembered, ascending.
std::vector<OrderSetting> OrdersToRestore(const RememberedParameters& parameters);

}  // namespace Korvex3Sync
