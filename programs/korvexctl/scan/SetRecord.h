#pragma once

namespace Korvex3Sync::korvexctl {

/// What a scan notes of one set.
struct SetRecord {
    int number = 0;  // from 0
    int key = 0;     // 0 to 255: the trigger number modulo 256
    bool color = false;
    bool kept = false;      // for pictures
    bool recorded = false;  // for a replay
    int lostBefore = 0;     // triggers without a set since the previous set, by the keys
    double seconds = 0;     // from the arrival of the first set to that of this one
    double callbackUs = 0;  // time in the scan callback
};

}  // namespace Korvex3Sync::korvexctl
