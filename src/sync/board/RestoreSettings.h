#pragma once

#include <functional>

#include "sync/board/RememberedSettings.h"

namespace Korvex3Sync {

/// Writes a trigger mode. The counting of frames must know about each write.
using TriggerWriter = std::function<bool(void* board, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode)>;

/// Writes all remembered settings to an open board in a fixed order, the trigger mode through
/// `trigger`. A refused setting does not stop the others. Blocks for the board's answers.
void RestoreBoard(void* board, const RememberedSettings& settings, const TriggerWriter& trigger);

}  // namespace Korvex3Sync
