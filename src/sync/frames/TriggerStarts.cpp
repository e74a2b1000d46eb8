#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {
namespace {

bool GivesColor(int mode) {
    return mode == 3 || mode == 6;
}

}  // namespace

TriggerStarts::State TriggerStarts::StateOf(int mode) {
    switch (mode) {
        case 1:
        case 2:
        case 3:
        case 6:
            return State::Running;
        case 4:
            return State::Single;
        default:
            return State::Off;
    }
}

void TriggerStarts::Writing(int mode) {
    os::MutexGuard lock(m_mutex);
    m_asked = mode;
    m_colorBefore = m_run.givesColor;
    if (StateOf(mode) != State::Running) {
        return;
    }
    if (m_state != State::Running && m_state != State::Anew) {
        ++m_run.starts;
    }
    // Around a change of the mode no colour is expected rather than one too many.
    m_run.givesColor = m_run.givesColor && GivesColor(mode);
}

void TriggerStarts::Written(bool accepted) {
    os::MutexGuard lock(m_mutex);
    if (!accepted) {
        m_run.givesColor = m_colorBefore;
        m_state = m_state == State::Anew ? State::Anew : State::Unknown;
        return;
    }
    m_state = StateOf(m_asked);
    // After a stop the frames that wait in the cameras are still of the mode before.
    if (m_state == State::Running) {
        m_run.givesColor = GivesColor(m_asked);
    }
}

void TriggerStarts::ForgetState() {
    os::MutexGuard lock(m_mutex);
    m_state = State::Unknown;
}

void TriggerStarts::StartAnew() {
    os::MutexGuard lock(m_mutex);
    m_run.anew = ++m_run.starts;
    m_state = State::Anew;
}

TriggerStarts::Run TriggerStarts::Current() const {
    os::MutexGuard lock(m_mutex);
    return m_run;
}

}  // namespace Korvex3Sync
