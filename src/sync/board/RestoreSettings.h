#pragma once

#include <functional>

#include "sync/board/RememberedSettings.h"

namespace Korvex3Sync {

/// How a trigger mode is written: the counting of frames must see it.
using TriggerWriter = std::function<bool(void* board, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode)>;

/// Writes every remembered board setting to an open board, in the one order in which that is done,
/// the trigger mode through `trigger`; what the board refuses does not stop the rest. Blocks for
/// the board's answers.
void RestoreBoard(void* board, const RememberedSettings& settings, const TriggerWriter& trigger);

}  // namespace Korvex3Sync
