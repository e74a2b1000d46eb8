#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Korvex3Sync {

// A channel code ties an entry of the camera-serial list to a camera and a board channel:
// bits 0-3 the repeat number within a run of equal neighbouring serials, bits 4-7 the number of
// that run (the camera's slot), bits 8 and up the entry's index.

inline constexpr int kMostGroups = 16;
inline constexpr int kMostRepeats = 16;

constexpr int ChannelRepeat(int code) {
    return code & 0x0f;
}
constexpr int ChannelGroup(int code) {
    return (code & 0xf0) >> 4;
}
constexpr int ChannelIndex(int code) {
    return (code & 0xff00) >> 8;
}

/// One bit for each entry of the serial list (not for each camera).
constexpr unsigned AllCamerasMask(std::size_t entries) {
    return (1U << (entries & 31U)) - 1U;
}

/// What a serial list comes to.
struct ChannelAssignment {
    std::vector<int> codes;            // one per entry
    std::vector<std::string> serials;  // the first serial of each run
    bool fits = true;  // false: more runs, or more equal neighbours, than a code can number
};

/// Equal serials must stand next to each other to share a camera. Null entries count as empty.
ChannelAssignment AssignChannels(const std::vector<char*>& serials);

}  // namespace Korvex3Sync
