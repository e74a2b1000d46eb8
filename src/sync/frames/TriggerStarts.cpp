#include "sync/frames/TriggerStarts.h"

#include "platform/include/BoardFacts.h"

namespace Korvex3Sync {

TriggerStarts::State TriggerStarts::StateOf(int mode) {
    switch (hardware::RunOf(mode)) {
        case hardware::TriggerRun::Running:
            return State::Running;
        case hardware::TriggerRun::Single:
            return State::Single;
        case hardware::TriggerRun::Off:
            break;
    }
    return State::Off;
}

void TriggerStarts::Writing(int mode) {
    os::MutexGuard lock(m_mutex);
    m_asked = mode;
    m_colorBefore = m_run.givesColor;
    const bool running = StateOf(mode) == State::Running;
    m_starting = running && m_state != State::Running && m_state != State::Restarted;
    m_run.starts += m_starting ? 1 : 0;
    if (!running) {
        return;
    }
    // During a change of the mode, colour is only expected if both modes give it.
    m_run.givesColor = m_run.givesColor && hardware::AddsColor(mode);
}

void TriggerStarts::Written(bool accepted) {
    os::MutexGuard lock(m_mutex);
    if (!accepted) {
        m_run.givesColor = m_colorBefore;
        m_state = m_state == State::Restarted ? State::Restarted : State::Unknown;
        return;
    }
    m_state = StateOf(m_asked);
    // After a stop, the frames still in the cameras belong to the previous mode.
    if (m_state == State::Running) {
        m_run.givesColor = hardware::AddsColor(m_asked);
        m_run.changes += m_run.givesColor != m_colorBefore ? 1 : 0;
        m_run.changesAtStart = m_starting ? m_run.changes : m_run.changesAtStart;
    }
}

void TriggerStarts::ForgetState() {
    os::MutexGuard lock(m_mutex);
    m_state = State::Unknown;
}

void TriggerStarts::Restart() {
    os::MutexGuard lock(m_mutex);
    m_run.countsFrom = ++m_run.starts;
    m_run.changesAtStart = m_run.changes;
    m_state = State::Restarted;
}

TriggerStarts::Run TriggerStarts::Current() const {
    os::MutexGuard lock(m_mutex);
    return m_run;
}

}  // namespace Korvex3Sync
