#pragma once

#include <array>
#include <cstdint>

#include "virtual_head/board/BoardState.h"
#include "virtual_head/cameras/SensorSettings.h"

namespace Korvex3Sync::virtual_head {

/// One exposure of the sensors, still without pixels, which are made when a camera fetches it.
struct Exposure {
    std::uint64_t trigger = 0;  // number of the trigger since the start, from 0
    std::uint8_t key = 0;       // trigger modulo 256
    bool color = false;         // a colour frame; otherwise a mono frame of both sensors
    BoardState light = {};      // the state of the board at that moment
    std::array<SensorSetting, 2> sensors = {};  // exposure and gain, left and right
    bool torn = false;                          // the camera refuses it
    bool misSized = false;                      // the camera gives it an impossible size
    bool counted = false;                       // included in HeadCounts
};

}  // namespace Korvex3Sync::virtual_head
