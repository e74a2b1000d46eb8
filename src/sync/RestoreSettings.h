#pragma once

#include <vector>

#include "sync/RememberedSettings.h"

namespace Korvex3Sync {

/// Exposure and gain that were set for one camera order.
struct OrderSetting {
    int order = 0;
    double exposure = 0.0;
    int gain = 0;
    bool operator==(const OrderSetting&) const = default;
};

/// The orders for which both were remembered, ascending.
std::vector<OrderSetting> OrdersToRestore(const RememberedSettings& settings);

/// Writes every remembered board setting to an open board, in the one order in which that is done;
/// what the board refuses does not stop the rest. Blocks for the board's answers.
void RestoreBoard(void* board, const RememberedSettings& settings);

}  // namespace Korvex3Sync
