#include "sync/board/BoardTranslation.h"

#include "platform/include/BoardFacts.h"

namespace Korvex3Sync {

namespace board = zr3DHandiDLPdev;

board::LASERWORKMODE ToBoard(LASERWORKMODE mode) {
    return board::LASERWORKMODE{int{mode}};
}

board::PROJECTTYPE ToBoard(PROJECTWORKTYPES type) {
    const int number = type;
    return board::PROJECTTYPE{number >= 0 && number <= 2 ? number : 0};
}

board::DISTANCEINDICATE ToBoard(DISTANCESTATUS state) {
    switch (int{state}) {
        case 1:
            return board::DISTANCEINDICATE{1};
        case 2:
            return board::DISTANCEINDICATE{3};
        case 3:
            return board::DISTANCEINDICATE{2};
        default:
            return board::DISTANCEINDICATE{0};
    }
}

board::MASK_TRIGGER_MODE ToBoard(CAMERA_TRIGGER_MODE mode, bool enable) {
    namespace modes = hardware::trigger_mode;
    if (!enable) {
        return board::MASK_TRIGGER_MODE{modes::kOff};
    }
    switch (int{mode}) {
        case 1:
            return board::MASK_TRIGGER_MODE{modes::kLines};
        case 2:
            return board::MASK_TRIGGER_MODE{modes::kPattern};
        case 3:
            return board::MASK_TRIGGER_MODE{modes::kPatternAndColor};
        case 4:
            return board::MASK_TRIGGER_MODE{modes::kLinesAndColor};
        case 5:
            return board::MASK_TRIGGER_MODE{modes::kSingleColor};
        default:
            return board::MASK_TRIGGER_MODE{modes::kOff};
    }
}

std::optional<board::TRIGGERROUTE> ToBoard(CONTROLROUTE route) {
    const int number = route;
    if (number < 0 || number > 2) {
        return std::nullopt;
    }
    return board::TRIGGERROUTE{number};
}

std::optional<board::MASK_STROBE_STATE> ToBoard(STROBE_STATE state) {
    const int number = state;
    if (number < 1 || number > 4) {
        return std::nullopt;
    }
    return board::MASK_STROBE_STATE{number};
}

}  // namespace Korvex3Sync
