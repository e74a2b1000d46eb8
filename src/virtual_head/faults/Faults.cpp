#include "virtual_head/faults/Faults.h"

#include <iterator>
#include <utility>

#include "virtual_head/base/Journal.h"

namespace Korvex3Sync::virtual_head {

Faults::Faults(Journal* journal)
    : m_journal(journal),
      m_board(journal),
      m_frames(journal),
      m_schedule(journal, [this](const FaultOrder& order) { return Order(order); }) {}

void Faults::Start(Hooks hooks, const std::vector<TimedFault>& timed, std::uint64_t seed) {
    m_hooks = std::move(hooks);
    m_schedule.Start(timed, seed);
}

void Faults::End() {
    m_schedule.End();
}

bool Faults::Order(const FaultOrder& order) {
    if (Check(order)) {
        return false;
    }
    switch (order.kind) {
        case FaultKind::Fail:
        case FaultKind::Slow:
        case FaultKind::Hang:
            return OrderByCall(order);
        case FaultKind::BoardVanish:
            return OrderVanishing(m_board.Plugged(), order, FaultKind::BoardReturn,
                                  m_hooks.boardVanished);
        case FaultKind::BoardReturn:
            return m_board.Plugged().Return(m_hooks.boardReturned);
        case FaultKind::BoardMute:
            m_board.Mute(order.opens);
            return EndLater(order, FaultKind::BoardAnswer);
        case FaultKind::BoardAnswer:
            return m_board.Answer();
        case FaultKind::BoardLate:
            m_board.Late(order.extra, order.times);
            return true;
        case FaultKind::CameraVanish:
            return OrderVanishing(m_camera, order, FaultKind::CameraReturn, m_hooks.cameraVanished);
        case FaultKind::CameraReturn:
            return m_camera.Return({});
        default:
            m_frames.Order(order);
            return true;
    }
}

bool Faults::Fail(const std::string& call, int times) {
    return m_calls.Fail(call, times);
}

bool Faults::Slow(const std::string& call, std::chrono::milliseconds extra, int times) {
    return m_calls.Slow(call, extra, times);
}

bool Faults::Hang(const std::string& call) {
    return m_calls.Hang(call, 1, std::chrono::milliseconds(0));
}

void Faults::ReleaseHangs() {
    m_calls.ReleaseHangs();
}

void Faults::ReleaseHangs(const std::string& call) {
    m_calls.ReleaseHangs(call);
}

bool Faults::WaitForHang(const std::string& call, std::chrono::milliseconds limit) {
    return m_calls.WaitForHang(call, limit);
}

std::vector<std::string> Faults::Unused() const {
    std::vector<std::string> unused = m_calls.Unused();
    if (m_camera.Unnoticed()) {
        unused.push_back(std::string(Name(FaultKind::CameraVanish)) + ": no call met it");
    }
    for (auto&& more : {m_board.Unused(), m_frames.Unused(), m_schedule.Unused()}) {
        unused.insert(unused.end(), more.begin(), more.end());
    }
    return unused;
}

void Faults::Clear() {
    m_schedule.Clear();
    m_calls.Clear();
    m_board.Clear();
    m_frames.Clear();
    m_camera.Forget();
}

bool Faults::ReachCamera(std::uint64_t plug, const std::string& call) {
    return Reached(m_camera.Reach(plug), call);
}

bool Faults::ReachCamera(const std::string& call) {
    return Reached(m_camera.Reach(), call);
}

bool Faults::Reached(bool reached, const std::string& call) {
    if (!reached && m_journal != nullptr) {
        m_journal->AddFault(std::string(Name(FaultKind::CameraVanish)) + ", " + call, "met");
    }
    return reached;
}

bool Faults::OrderByCall(const FaultOrder& order) {
    switch (order.kind) {
        case FaultKind::Fail:
            return m_calls.Fail(order.call, order.times);
        case FaultKind::Slow:
            return m_calls.Slow(order.call, order.extra, order.times);
        default:
            return m_calls.Hang(order.call, order.times, order.lasting);
    }
}

bool Faults::OrderVanishing(Presence& device, const FaultOrder& order, FaultKind end,
                            const std::function<void()>& hook) {
    return device.Vanish(hook) && EndLater(order, end);
}

bool Faults::EndLater(const FaultOrder& order, FaultKind end) {
    FaultOrder ending;
    ending.kind = end;
    return order.lasting.count() == 0 || m_schedule.After(order.lasting, ending);
}

}  // namespace Korvex3Sync::virtual_head
