#include "sync/frames/ScanCounters.h"

namespace Korvex3Sync {
namespace {

constexpr double kHalf = 0.5;
constexpr double kNearlyAll = 0.99;

}  // namespace

void ScanCounters::UnroutedFrame() {
    os::MutexGuard lock(m_mutex);
    ++m_counts.unroutedFrames;
}

void ScanCounters::UndecodableFrame() {
    os::MutexGuard lock(m_mutex);
    ++m_counts.undecodableFrames;
}

void ScanCounters::MonoArrived(const KeyStep& step) {
    os::MutexGuard lock(m_mutex);
    ++m_counts.setsPending;
    m_counts.missingKeys += step.missing;
    m_counts.repeatedKeys += step.repeated ? 1 : 0;
}

void ScanCounters::ColorWithoutMono() {
    os::MutexGuard lock(m_mutex);
    ++m_counts.colorWithoutMono;
}

void ScanCounters::ColorForSnapshot() {
    os::MutexGuard lock(m_mutex);
    ++m_counts.colorForSnapshot;
}

void ScanCounters::SetDelivered(Duration took, bool withColor, bool colorMissing) {
    os::MutexGuard lock(m_mutex);
    --m_counts.setsPending;
    ++m_counts.setsDelivered;
    m_counts.setsWithColor += withColor ? 1 : 0;
    m_counts.monoWithoutColor += colorMissing ? 1 : 0;
    m_times.Add(took);
}

void ScanCounters::SetThrown(Duration took) {
    os::MutexGuard lock(m_mutex);
    --m_counts.setsPending;
    ++m_counts.setsWithoutCallback;
    m_times.Add(took);
}

void ScanCounters::SetWithoutCallback() {
    os::MutexGuard lock(m_mutex);
    --m_counts.setsPending;
    ++m_counts.setsWithoutCallback;
}

void ScanCounters::SetDropped() {
    os::MutexGuard lock(m_mutex);
    --m_counts.setsPending;
    ++m_counts.setsDropped;
}

void ScanCounters::Read(ScanStatistics& statistics) const {
    os::MutexGuard lock(m_mutex);
    statistics = m_counts;
    statistics.callbackP50Us = m_times.Percentile(kHalf);
    statistics.callbackP99Us = m_times.Percentile(kNearlyAll);
    statistics.callbackLongestUs = m_times.Longest();
}

}  // namespace Korvex3Sync
