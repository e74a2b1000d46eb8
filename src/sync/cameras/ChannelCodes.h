#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Korvex3Sync {

// A channel code assigns an entry of the camera-serial list to a camera and a board channel. Bits
// 0-3 are the repeat number within a run of equal neighbouring serials, bits 4-7 the number of that
// run (the camera's slot), bits 8 and up the index of the entry.

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

/// The channel codes of a serial list.
struct ChannelAssignment {
    std::vector<int> codes;            // one per entry
    std::vector<std::string> serials;  // the serial of each run
    bool fits = true;  // false: more runs or equal neighbours than a code can number
};

/// Equal serials share a camera only if they are next to each other. A null entry counts as empty.
ChannelAssignment AssignChannels(const std::vector<char*>& serials);

}  // namespace Korvex3Sync
