#include "platform/os/Clock.h"

#include <atomic>
#include <thread>

#include "platform/os/TimeScale.h"

namespace Korvex3Sync::os {
namespace {

std::atomic<double> g_factor{1.0};

}  // namespace

std::chrono::steady_clock::duration Scaled(std::chrono::milliseconds nominal) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double, std::milli>(static_cast<double>(nominal.count()) *
                                                  g_factor.load()));
}

void SleepFor(std::chrono::milliseconds nominal) {
    std::this_thread::sleep_for(Scaled(nominal));
}

ScopedTimeScale::ScopedTimeScale(double factor) : m_previous(g_factor.exchange(factor)) {}

ScopedTimeScale::~ScopedTimeScale() {
    g_factor.store(m_previous);
}

}  // namespace Korvex3Sync::os
