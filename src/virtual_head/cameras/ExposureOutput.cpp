#include "virtual_head/cameras/ExposureOutput.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Korvex3Sync::virtual_head {

void ExposureOutput::Attach(const std::shared_ptr<ExposureQueue>& queue) {
    if (queue && std::find(m_queues.begin(), m_queues.end(), queue) == m_queues.end()) {
        m_queues.push_back(queue);
    }
}

void ExposureOutput::Detach(const std::shared_ptr<ExposureQueue>& queue) {
    if (std::erase(m_queues, queue) > 0) {
        const ExposureQueue::Counts settled = queue->Settle();
        Add(m_counts, settled);
        m_lostDetached += settled.lost;
    }
}

void ExposureOutput::DetachAll() {
    while (!m_queues.empty()) {
        Detach(std::shared_ptr<ExposureQueue>(m_queues.back()));
    }
}

void ExposureOutput::Start() {
    ReleaseHeld();
    m_trigger = 0;
}

void ExposureOutput::GiveTrigger(bool mono, bool color, const Exposure& moment) {
    TriggerFate fate;
    if (Attended()) {
        fate = m_faults.Meet({m_counts.triggers, m_trigger}, mono, color);
    }
    m_trigger += fate.keysSkipped;
    m_counts.triggers += fate.keysSkipped;
    m_counts.keysSkipped += fate.keysSkipped;
    m_counts.colorOnly += mono ? 0 : 1;
    m_counts.delayed += fate.delay > 0 ? 1 : 0;
    const std::uint64_t release = m_given + static_cast<std::uint64_t>(fate.delay);
    if (mono) {
        Make(false, fate.mono, release, moment);
    }
    if (color) {
        Make(true, fate.color, release, moment);
    }
    HandDue(m_given);
    ++m_given;
    ++m_trigger;
    ++m_counts.triggers;
}

void ExposureOutput::ReleaseHeld() {
    HandDue(std::numeric_limits<std::uint64_t>::max());
}

HeadCounts ExposureOutput::Counts() const {
    HeadCounts counts = m_counts;
    for (const Held& held : m_held) {
        ++(held.exposure.color ? counts.color : counts.mono).heldBack;
    }
    for (const auto& queue : m_queues) {
        Add(counts, queue->Counted());
    }
    return counts;
}

std::uint64_t ExposureOutput::Lost() const {
    std::uint64_t lost = m_lostDetached;
    for (const auto& queue : m_queues) {
        lost += queue->Lost();
    }
    return lost;
}

void ExposureOutput::Make(bool color, const ExposureFate& fate, std::uint64_t release,
                          const Exposure& moment) {
    FrameCounts& counts = Of(color);
    ++counts.made;
    if (fate.lost) {
        ++counts.lost;
        return;
    }
    Exposure exposure = moment;
    exposure.trigger = m_trigger;
    exposure.key = static_cast<std::uint8_t>(m_trigger & 0xFFU);
    exposure.color = color;
    exposure.torn = fate.torn;
    exposure.misSized = fate.misSized;
    m_held.push_back({exposure, release, fate.repeated});
}

// Keeps the order: a due exposure waits for an earlier one that is not due.
void ExposureOutput::HandDue(std::uint64_t given) {
    while (!m_held.empty() && m_held.front().release <= given) {
        const Held held = m_held.front();
        m_held.pop_front();
        Hand(held.exposure);
        if (held.repeated) {
            ++Of(held.exposure.color).repeated;
            Hand(held.exposure);
        }
    }
}

void ExposureOutput::Hand(Exposure exposure) {
    FrameCounts& counts = Of(exposure.color);
    if (!Attended()) {
        ++counts.unattended;
        return;
    }
    exposure.counted = true;
    for (const auto& queue : m_queues) {
        const auto pushed = queue->Push(exposure);
        if (!std::exchange(exposure.counted, false)) {
            continue;
        }
        switch (pushed) {
            case ExposureQueue::Pushed::Taken:
                ++counts.handed;
                counts.torn += exposure.torn ? 1 : 0;
                counts.misSized += exposure.misSized ? 1 : 0;
                break;
            case ExposureQueue::Pushed::NoRoom:
                ++counts.lostInBuffers;
                break;
            case ExposureQueue::Pushed::Closed:
                ++counts.unattended;
                break;
        }
    }
}

void ExposureOutput::Add(HeadCounts& counts, const ExposureQueue::Counts& counted) {
    counts.mono.fetched += counted.fetched[0];
    counts.color.fetched += counted.fetched[1];
    counts.mono.dropped += counted.dropped[0];
    counts.color.dropped += counted.dropped[1];
}

}  // namespace Korvex3Sync::virtual_head
