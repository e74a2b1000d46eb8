#include "korvexctl/scan/HeadRecovery.h"

#include <Korvex3Sync/Connection.h>

#include <chrono>

#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kAnswerLimit{3};

}  // namespace

HeadRecovery::HeadRecovery(const Session& session, std::size_t cameras, StatusWatch& watch)
    : m_session(session), m_watch(watch) {
    if (BoardAnswers(session)) {
        m_settings.emplace(session.Handle(), cameras);
    }
}

bool HeadRecovery::Try() {
    if (ReconnectDevice(m_session.Handle()) != STATUS_SUCCESS) {
        return false;
    }
    // Until a good poll the library keeps the board marked as lost, and sends it nothing.
    m_watch.Forget();
    if (!m_watch.WaitForAnswer(std::chrono::steady_clock::now() + kAnswerLimit)) {
        return false;
    }
    if (m_settings) {
        m_notRestored = m_settings->PutBack(m_session.Handle());
    }
    return true;
}

}  // namespace Korvex3Sync::korvexctl
