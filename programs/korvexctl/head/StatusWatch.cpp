#include "korvexctl/head/StatusWatch.h"

#include <Korvex3Sync/Images.h>

#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr unsigned char kNoAnswer = 255;
// Minutes of polls that may wait while the output is blocked.
constexpr std::size_t kMostPolls = 1000;

}  // namespace

BoardStatus BoardStatus::NoAnswer() {
    return {kNoAnswer, kNoAnswer};
}

bool BoardStatus::Answers() const {
    return *this != NoAnswer();
}

void StatusWatch::Watch(const Session& session) {
    Require(SetStatusCallBackFunction(session.Handle(), OnStatus, m_context.Pointer()),
            "watch the board's status");
}

void StatusWatch::OnStatus(const void* const& context, const unsigned char& statusA,
                           const unsigned char& statusB) {
    CallbackContext<StatusWatch>::With(context, [&](StatusWatch& watch) {
        watch.Add({std::chrono::system_clock::now(), {statusA, statusB}});
    });
}

void StatusWatch::Add(const Poll& poll) {
    const os::MutexGuard guard(m_mutex);
    if (m_polls.size() == kMostPolls) {
        m_polls.pop_front();
    }
    m_polls.push_back(poll);
    m_lost = !poll.status.Answers();
    m_changed.NotifyAll();
}

bool StatusWatch::Lost() const {
    const os::MutexGuard guard(m_mutex);
    return m_lost;
}

std::optional<StatusWatch::Poll> StatusWatch::Next(std::optional<Deadline> end) {
    const os::MutexGuard guard(m_mutex);
    bool inTime = true;
    while (inTime && !m_stopped && m_polls.empty()) {
        if (end) {
            inTime = m_changed.WaitUntil(m_mutex, *end);
        } else {
            m_changed.Wait(m_mutex);
        }
    }
    if (m_stopped || m_polls.empty()) {
        return std::nullopt;
    }
    const Poll poll = m_polls.front();
    m_polls.pop_front();
    return poll;
}

bool StatusWatch::WaitForAnswer(Deadline end) {
    while (const auto poll = Next(end)) {
        if (poll->status.Answers()) {
            return true;
        }
    }
    return false;
}

void StatusWatch::Forget() {
    const os::MutexGuard guard(m_mutex);
    m_polls.clear();
}

void StatusWatch::Stop() {
    const os::MutexGuard guard(m_mutex);
    m_stopped = true;
    m_changed.NotifyAll();
}

}  // namespace Korvex3Sync::korvexctl
