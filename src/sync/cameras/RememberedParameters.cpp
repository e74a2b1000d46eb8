#include "sync/cameras/RememberedParameters.h"

namespace Korvex3Sync {

std::vector<OrderSetting> OrdersToRestore(const RememberedParameters& parameters) {
    std::vector<OrderSetting> orders;
    for (const auto& [order, exposure] : parameters.exposures) {
        const auto gain = parameters.gains.find(order);
        if (gain != parameters.gains.end()) {
            orders.push_back({order, exposure, gain->second});
        }
    }
    return orders;
}

}  // namespace Korvex3Sync
