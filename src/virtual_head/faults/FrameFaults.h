#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {

class Journal;

/// A trigger of the head.
struct TriggerNumbers {
    std::uint64_t sinceHead = 0;   // from 0 since the head was created
    std::uint64_t sinceStart = 0;  // from 0 since the trigger was started; its key modulo 256
};

/// What happens to an exposure: at most one of these.
struct ExposureFate {
    bool lost = false;
    bool torn = false;
    bool misSized = false;
    bool repeated = false;
};

/// What happens to a trigger and its exposures.
struct TriggerFate {
    std::uint64_t keysSkipped = 0;  // triggers before it that no camera saw
    int delay = 0;                  // number of triggers by which its exposures are late
    ExposureFate mono;
    ExposureFate color;
};

/// Faults of frames, by trigger. An ordered fault applies to the next triggers that have the frame.
/// A frame gets at most one fault: lose, tear, mis-size or repeat, in this order. Each applied
/// fault is entered in the journal. Thread-safe; does not block.
class KORVEX_VIRTUAL_HEAD_API FrameFaults {
public:
    /// `journal` may be null.
    explicit FrameFaults(Journal* journal) : m_journal(journal) {}

    /// For the kinds from CameraStop to SkipKeys. The order must be valid.
    void Order(const FaultOrder& order);
    /// A camera was started: ends a CameraStop.
    void CameraStarted();
    /// Applies the faults to a trigger. `mono` and `color` say which exposures it has.
    TriggerFate Meet(TriggerNumbers numbers, bool mono, bool color);

    std::vector<std::string> Unused() const;
    void Clear();

private:
    std::int64_t& Left(FaultKind kind) KORVEX_REQUIRES(m_mutex) {
        return m_left.at(static_cast<std::size_t>(kind));
    }
    bool Spend(FaultKind kind, TriggerNumbers numbers) KORVEX_REQUIRES(m_mutex);
    ExposureFate MeetFrame(bool color, TriggerNumbers numbers) KORVEX_REQUIRES(m_mutex);
    void Write(FaultKind kind, TriggerNumbers numbers) const;

    Journal* const m_journal;
    mutable os::Mutex m_mutex;
    std::array<std::int64_t, static_cast<std::size_t>(FaultKind::SkipKeys) + 1> m_left
        KORVEX_GUARDED_BY(m_mutex){};
    int m_delay KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_stopped KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_stopUnmet KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync::virtual_head
