#include "virtual_head/faults/FrameFaults.h"

#include <utility>

#include "virtual_head/base/Journal.h"

namespace Korvex3Sync::virtual_head {

void FrameFaults::Order(const FaultOrder& order) {
    os::MutexGuard guard(m_mutex);
    if (order.kind == FaultKind::CameraStop) {
        m_stopped = true;
        m_stopUnmet = true;
        return;
    }
    Left(order.kind) += order.times;
    if (order.kind == FaultKind::Delay) {
        m_delay = order.byTriggers;
    }
}

void FrameFaults::CameraStarted() {
    os::MutexGuard guard(m_mutex);
    m_stopped = false;
}

TriggerFate FrameFaults::Meet(TriggerNumbers numbers, bool mono, bool color) {
    os::MutexGuard guard(m_mutex);
    TriggerFate fate;
    if (std::int64_t& skip = Left(FaultKind::SkipKeys); skip > 0) {
        fate.keysSkipped = static_cast<std::uint64_t>(std::exchange(skip, 0));
        numbers.sinceHead += fate.keysSkipped;
        numbers.sinceStart += fate.keysSkipped;
        Write(FaultKind::SkipKeys, numbers);
    }
    if (m_stopped) {
        m_stopUnmet = false;
        Write(FaultKind::CameraStop, numbers);
        fate.mono.lost = fate.color.lost = true;
        return fate;
    }
    if (Spend(FaultKind::LoseBoth, numbers)) {
        fate.mono.lost = fate.color.lost = true;
        return fate;
    }
    if (mono) {
        fate.mono = MeetFrame(false, numbers);
    }
    if (color) {
        fate.color = MeetFrame(true, numbers);
    }
    const bool anythingLeft = (mono && !fate.mono.lost) || (color && !fate.color.lost);
    if (anythingLeft && Spend(FaultKind::Delay, numbers)) {
        fate.delay = m_delay;
    }
    return fate;
}

ExposureFate FrameFaults::MeetFrame(bool color, TriggerNumbers numbers) {
    ExposureFate fate;
    const auto spend = [&](FaultKind ofMono, FaultKind ofColor) KORVEX_REQUIRES(m_mutex) {
        return Spend(color ? ofColor : ofMono, numbers);
    };
    fate.lost = spend(FaultKind::LoseMono, FaultKind::LoseColor);
    fate.torn = !fate.lost && spend(FaultKind::TearMono, FaultKind::TearColor);
    fate.misSized =
        !fate.lost && !fate.torn && spend(FaultKind::MisSizeMono, FaultKind::MisSizeColor);
    fate.repeated = !fate.lost && !fate.torn && !fate.misSized &&
                    spend(FaultKind::RepeatMono, FaultKind::RepeatColor);
    return fate;
}

bool FrameFaults::Spend(FaultKind kind, TriggerNumbers numbers) {
    std::int64_t& left = Left(kind);
    if (left == 0) {
        return false;
    }
    --left;
    Write(kind, numbers);
    return true;
}

std::vector<std::string> FrameFaults::Unused() const {
    os::MutexGuard guard(m_mutex);
    std::vector<std::string> unused;
    if (m_stopUnmet) {
        unused.push_back(std::string(Name(FaultKind::CameraStop)) + ": no trigger met it");
    }
    for (std::size_t kind = 0; kind < m_left.size(); ++kind) {
        if (m_left.at(kind) > 0) {
            unused.push_back(std::string(Name(static_cast<FaultKind>(kind))) + ": " +
                             std::to_string(m_left.at(kind)) + " left");
        }
    }
    return unused;
}

void FrameFaults::Clear() {
    os::MutexGuard guard(m_mutex);
    m_left.fill(0);
    m_stopped = false;
    m_stopUnmet = false;
}

void FrameFaults::Write(FaultKind kind, TriggerNumbers numbers) const {
    if (m_journal != nullptr) {
        m_journal->AddFault(std::string(Name(kind)) + ", trigger " +
                                std::to_string(numbers.sinceHead) + ", key " +
                                std::to_string(numbers.sinceStart % 256),
                            "met");
    }
}

}  // namespace Korvex3Sync::virtual_head
