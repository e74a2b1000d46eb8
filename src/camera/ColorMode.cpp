#include "camera/ColorMode.h"

#include <algorithm>
#include <array>

namespace Korvex3Sync {
namespace {

struct Meaning {
    int mode;
    int callbackChannels;
    int splitChannels;
    bool color;
};

constexpr std::array<Meaning, 5> kMeanings{{
    {1, 1, 1, false},
    {2, 2, 2, false},
    {16, 1, 1, true},
    {17, 3, 3, true},
    {18, 1, 6, true},
}};
constexpr Meaning kAnythingElse{0, 1, 1, false};

constexpr Meaning MeaningOf(int mode) {
    const auto* const found =
        std::find_if(kMeanings.begin(), kMeanings.end(),
                     [mode](const Meaning& meaning) { return meaning.mode == mode; });
    return found != kMeanings.end() ? *found : kAnythingElse;
}

}  // namespace

int CallbackChannels(zr3DCamera::ZR_IMG_FORMAT mode) {
    return MeaningOf(mode).callbackChannels;
}

bool IsColorCamera(zr3DCamera::ZR_IMG_FORMAT mode) {
    return MeaningOf(mode).color;
}

int SplitChannels(int format) {
    return MeaningOf(format).splitChannels;
}

}  // namespace Korvex3Sync
