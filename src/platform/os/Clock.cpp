#include "platform/os/Clock.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <thread>

#include "platform/os/Environment.h"
#include "platform/os/Print.h"
#include "platform/os/TimeScale.h"

namespace Korvex3Sync::os {
namespace {

#if KORVEX_CHECKS
double InitialFactor() {
    const auto text = Variable("KORVEX_TIME_SCALE");
    if (!text) {
        return 1;
    }
    double factor = 0;
    std::istringstream stream(*text);
    stream.imbue(std::locale::classic());
    if (!(stream >> factor) || !stream.eof() || !(factor > 0)) {
        // Otherwise a test would run at the wrong speed without notice.
        PrintError("KORVEX_TIME_SCALE: \"%s\" is not a number above 0\n", text->c_str());
        std::exit(EXIT_FAILURE);
    }
    return factor;
}
#else
double InitialFactor() {
    return 1;
}
#endif

std::atomic<double>& Factor() {
    static std::atomic<double> factor{InitialFactor()};
    return factor;
}

}  // namespace

std::chrono::steady_clock::duration Scaled(std::chrono::milliseconds nominal) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double, std::milli>(static_cast<double>(nominal.count()) *
                                                  Factor().load()));
}

int ScaledMilliseconds(std::chrono::milliseconds nominal) {
    const double scaled = std::ceil(static_cast<double>(nominal.count()) * Factor().load());
    return static_cast<int>(
        std::clamp(scaled, 0.0, static_cast<double>(std::numeric_limits<int>::max())));
}

void SleepFor(std::chrono::milliseconds nominal) {
    std::this_thread::sleep_for(Scaled(nominal));
}

ScopedTimeScale::ScopedTimeScale(double factor) : m_previous(Factor().exchange(factor)) {}

ScopedTimeScale::~ScopedTimeScale() {
    Factor().store(m_previous);
}

}  // namespace Korvex3Sync::os
