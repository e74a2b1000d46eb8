#pragma once

#include <functional>

#include "recorder/Recorder.h"

namespace Korvex3Sync::tests::recorder {

/// What the board does when the trigger mode is written: runs `action` inside each write of the
/// mode that gives one colour frame.
inline void OnSingleColorTrigger(std::function<void()> action) {
    Recorder::Get().OnCall("zr3DSetVideoTrigleMode", [action = std::move(action)] {
        const std::string call = Recorder::Get().Calls().back();
        if (call.ends_with(", 4)")) {
            action();
        }
    });
}

}  // namespace Korvex3Sync::tests::recorder
