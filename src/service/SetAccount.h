#pragma once

#include <QList>
#include <QVariant>

#include <chrono>
#include <cstdint>
#include <optional>

#include "Korvex3Sync/Statistics.h"
#include "platform/os/CriticalSection.h"
#include "sync/frames/CallbackTimes.h"

namespace Korvex3Sync {

/// What became of an image set that the service has sent a notice of.
enum class SetFate {
    Delivered,
    WithoutCallback,  ///< no callback was set, or it threw
    Unreadable,       ///< its place in shared memory had been given to a later set
    NoMemory
};

/// Counts what reaches the application in service mode and what is lost on the way. The figures of
/// direct mode come with the notices. Each device has an id, and its service counts from 0; the
/// account continues over a reconnection. Thread-safe.
class SetAccount {
public:
    using Clock = std::chrono::steady_clock;

    /// The application has connected this device: everything starts at 0.
    void Begin(std::int64_t device);
    /// A reconnection has connected this one: the figures of the one before stay.
    void Continue(std::int64_t device);
    /// A reconnection has succeeded: the gap in the image sets is over.
    void Reconnected();

    /// The set of a notice has come to its end. `took` is the time in the callback, if it was
    /// called. Without effect for a set of an earlier device.
    void SetEnded(const QList<QVariant>& noticeList, SetFate fate,
                  std::optional<Clock::duration> took);

    ScanStatistics Read() const;

private:
    /// What this process counts itself.
    struct Ends {
        std::uint64_t delivered = 0;
        std::uint64_t withColor = 0;
        std::uint64_t withoutCallback = 0;
        std::uint64_t unreadable = 0;
        std::uint64_t noMemory = 0;
        std::uint64_t notices = 0;

        void Count(SetFate fate, bool color);
    };

    void Start(std::int64_t device) KORVEX_REQUIRES(m_mutex);
    ScanStatistics OfThisDevice() const KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    std::int64_t m_device KORVEX_GUARDED_BY(m_mutex) = 0;
    /// Of the newest notice of this device. Without [5] and later elements: all 0.
    ScanStatistics m_service KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_written KORVEX_GUARDED_BY(m_mutex) = 0;
    Ends m_ends KORVEX_GUARDED_BY(m_mutex);
    /// Of the devices before, and the gaps between them.
    ScanStatistics m_before KORVEX_GUARDED_BY(m_mutex);
    CallbackTimes m_times KORVEX_GUARDED_BY(m_mutex);
    /// The last set, or the end of a reconnection.
    std::optional<Clock::time_point> m_lastSign KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
