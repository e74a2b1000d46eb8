#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "virtual_head/cameras/ExposureQueue.h"
#include "virtual_head/cameras/HeadCounts.h"
#include "virtual_head/faults/FrameFaults.h"

namespace Korvex3Sync::virtual_head {

/// The path from a trigger to the camera instances: makes the exposures, applies frame faults,
/// holds back delayed exposures, hands the others to every attached queue, and counts. Frame faults
/// apply only to triggers that a camera sees. It has no lock: the lock of the trigger clock guards
/// it.
class ExposureOutput {
public:
    explicit ExposureOutput(FrameFaults& faults) : m_faults(faults) {}

    void Attach(const std::shared_ptr<ExposureQueue>& queue);
    /// Drops the exposures in the queue.
    void Detach(const std::shared_ptr<ExposureQueue>& queue);
    void DetachAll();
    bool Attended() const { return !m_queues.empty(); }

    /// The trigger starts: numbers and keys begin at 0.
    void Start();
    /// `moment` holds what the exposures have in common: light and sensor settings.
    void GiveTrigger(bool mono, bool color, const Exposure& moment);
    /// Hands out the exposures that a delay holds back.
    void ReleaseHeld();

    HeadCounts Counts() const;
    std::uint64_t Triggers() const { return m_counts.triggers; }
    /// Exposures for which a queue had no room, for all queues.
    std::uint64_t Lost() const;

private:
    struct Held {
        Exposure exposure;
        std::uint64_t release;  // handed out after this many given triggers
        bool repeated;
    };

    void Make(bool color, const ExposureFate& fate, std::uint64_t release, const Exposure& moment);
    void HandDue(std::uint64_t given);
    void Hand(Exposure exposure);
    FrameCounts& Of(bool color) { return color ? m_counts.color : m_counts.mono; }
    static void Add(HeadCounts& counts, const ExposureQueue::Counts& counted);

    FrameFaults& m_faults;
    std::vector<std::shared_ptr<ExposureQueue>> m_queues;
    std::deque<Held> m_held;
    std::uint64_t m_trigger = 0;  // since the start
    std::uint64_t m_given = 0;    // since the head was created, without skipped ones
    std::uint64_t m_lostDetached = 0;
    HeadCounts m_counts;  // without the counts of attached queues
};

}  // namespace Korvex3Sync::virtual_head
