#pragma once

#include <functional>
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

/// How a trigger mode is written: whoever counts frames has to see it.
using TriggerWriter = std::function<bool(void* board, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode)>;

/// Writes every remembered board setting to an open board, in the one order in which that is done,
/// the trigger mode through `trigger`; what the board refuses does not stop the rest. Blocks for
/// the board's answers.
void RestoreBoard(void* board, const RememberedSettings& settings, const TriggerWriter& trigger);

}  // namespace Korvex3Sync
