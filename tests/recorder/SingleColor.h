#pragma once

#include <functional>

#include "recorder/Recorder.h"

namespace Korvex3Sync::tests::recorder {

/// Runs `action` inside each write of the trigger mode for single colour frames.
inline void OnSingleColorTrigger(std::function<void()> action) {
    Recorder::Get().OnCall("zr3DSetVideoTrigleMode", [action = std::move(action)] {
        const std::string call = Recorder::Get().Calls().back();
        if (call.ends_with(", 4)")) {
            action();
        }
    });
}

}  // namespace Korvex3Sync::tests::recorder
