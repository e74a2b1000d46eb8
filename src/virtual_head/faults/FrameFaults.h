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
    std::uint64_t sinceHead = 0;   // from 0 since the head exists
    std::uint64_t sinceStart = 0;  // from 0 since the trigger was started; its key modulo 256
};

/// What happens to one exposure: at most one of these.
struct ExposureFate {
    bool lost = false;
    bool torn = false;
    bool misSized = false;
    bool repeated = false;
};

/// What happens to one trigger and its exposures.
struct TriggerFate {
    std::uint64_t keysSkipped = 0;  // triggers in front of it that no camera saw
    int delay = 0;                  // triggers by which its exposures come late
    ExposureFate mono;
    ExposureFate color;
};

/// Faults of frames, by trigger: what is ordered is met by the next triggers that have the frame,
/// in the order lose, tear, mis-size, repeat, of which a frame meets one. What is met goes into the
/// journal. Thread-safe; nothing blocks.
class KORVEX_VIRTUAL_HEAD_API FrameFaults {
public:
    /// `journal` may be null.
    explicit FrameFaults(Journal* journal) : m_journal(journal) {}

    /// For the kinds from CameraStop to SkipKeys, whose order was checked.
    void Order(const FaultOrder& order);
    /// A camera was started: ends a camera that stopped.
    void CameraStarted();
    /// What meets this trigger; `mono` and `color` say which exposures it has.
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
