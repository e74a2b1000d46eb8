#include "sync/cameras/ExposureWord.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Korvex3Sync {
namespace {

constexpr double kTenthsPerMillisecond = 10.0;
constexpr double kByteValues = 256.0;
constexpr unsigned kByte = 0xFFU;
constexpr unsigned kOrderBits = 3U;

unsigned LowByteOf(double value) {
    if (!std::isfinite(value)) {
        return 0;
    }
    // Reduced before the cast, which is undefined for values outside the range of int.
    const int rest = static_cast<int>(std::fmod(std::trunc(value), kByteValues));
    return static_cast<unsigned>(rest) & kByte;
}

unsigned HighByteOf(int order, int gain) {
    const unsigned orderBits = static_cast<unsigned>(order) & kOrderBits;
    return ((static_cast<unsigned>(gain) << 2U) | orderBits) & kByte;
}

}  // namespace

int ExposureGainWord(int order, double exposure, int gain) {
    return static_cast<int>(HighByteOf(order, gain) << 8U |
                            LowByteOf(exposure * kTenthsPerMillisecond));
}

int SelectionWord(int order) {
    return static_cast<int>(HighByteOf(order, 0) << 8U);
}

int ExposureMicroseconds(double milliseconds) {
    const double microseconds = milliseconds * kMicrosecondsPerMillisecond;
    if (std::isnan(microseconds)) {
        return 0;
    }
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp(microseconds, double{Limits::min()}, double{Limits::max()}));
}

}  // namespace Korvex3Sync
