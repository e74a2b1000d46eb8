#include "sync/cameras/ChannelCodes.h"

#include <string_view>

namespace Korvex3Sync {
namespace {

std::string_view Text(const char* serial) {
    return serial != nullptr ? serial : "";
}

}  // namespace

ChannelAssignment AssignChannels(const std::vector<char*>& serials) {
    ChannelAssignment assignment;
    int group = 0;
    int repeat = 0;
    for (std::size_t i = 0; i < serials.size(); ++i) {
        const bool first = i == 0;
        if (!first && Text(serials[i]) == Text(serials[i - 1])) {
            ++repeat;
        } else {
            group += first ? 0 : 1;
            repeat = 0;
            assignment.serials.emplace_back(Text(serials[i]));
        }
        assignment.fits = assignment.fits && group < kMostGroups && repeat < kMostRepeats;
        assignment.codes.push_back((repeat & 0x0f) | ((group & 0x0f) << 4) |
                                   (static_cast<int>(i) << 8));
    }
    return assignment;
}

}  // namespace Korvex3Sync
