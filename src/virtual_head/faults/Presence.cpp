#include "virtual_head/faults/Presence.h"

namespace Korvex3Sync::virtual_head {

bool Presence::Vanish(const Action& then) {
    if (!Pass(State::Here, State::Leaving)) {
        return false;
    }
    if (then) {
        then();
    }
    return Pass(State::Leaving, State::Gone);
}

bool Presence::Return(const Action& first) {
    if (!Pass(State::Gone, State::Returning)) {
        return false;
    }
    if (first) {
        first();
    }
    return Pass(State::Returning, State::Here);
}

bool Presence::Pass(State from, State to) {
    os::MutexGuard guard(m_mutex);
    if (m_state != from) {
        return false;
    }
    m_state = to;
    m_unnoticed = m_unnoticed || to == State::Leaving;
    m_plug += to == State::Here ? 1 : 0;
    return true;
}

bool Presence::Here() const {
    os::MutexGuard guard(m_mutex);
    return m_state == State::Here;
}

std::uint64_t Presence::Plug() const {
    os::MutexGuard guard(m_mutex);
    return m_plug;
}

bool Presence::Reach(std::uint64_t plug) {
    os::MutexGuard guard(m_mutex);
    const bool reached = m_state == State::Here && m_plug == plug;
    m_unnoticed = m_unnoticed && reached;
    return reached;
}

bool Presence::Reach() {
    os::MutexGuard guard(m_mutex);
    const bool reached = m_state == State::Here;
    m_unnoticed = m_unnoticed && reached;
    return reached;
}

bool Presence::Unnoticed() const {
    os::MutexGuard guard(m_mutex);
    return m_unnoticed;
}

void Presence::Forget() {
    os::MutexGuard guard(m_mutex);
    m_unnoticed = false;
}

}  // namespace Korvex3Sync::virtual_head
