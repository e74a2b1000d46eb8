#include "korvexctl/head/StatusWatch.h"

#include <Korvex3Sync/Images.h>

#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr unsigned char kNoAnswer = 255;
// Minutes of polls that a blocked output may leave waiting.
constexpr std::size_t kMostPolls = 1000;

}  // namespace

BoardStatus BoardStatus::NoAnswer() {
    return {kNoAnswer, kNoAnswer};
}

bool BoardStatus::Answers() const {
    return *this != NoAnswer();
}

void StatusWatch::Watch(const Session& session) {
    Require(SetStatusCallBackFunction(session.Handle(), OnStatus, &m_self),
            "watch the board's status");
}

void StatusWatch::OnStatus(const void* const& context, const unsigned char& statusA,
                           const unsigned char& statusB) {
    (*static_cast<StatusWatch* const*>(context))
        ->Add({std::chrono::system_clock::now(), {statusA, statusB}});
}

void StatusWatch::Add(const Poll& poll) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_polls.size() == kMostPolls) {
            m_polls.pop_front();
        }
        m_polls.push_back(poll);
    }
    m_changed.notify_all();
}

std::optional<StatusWatch::Poll> StatusWatch::Next(
    std::optional<std::chrono::steady_clock::time_point> end) {
    std::unique_lock lock(m_mutex);
    const auto ready = [this] { return m_stopped || !m_polls.empty(); };
    if (end) {
        m_changed.wait_until(lock, *end, ready);
    } else {
        m_changed.wait(lock, ready);
    }
    if (m_stopped || m_polls.empty()) {
        return std::nullopt;
    }
    const Poll poll = m_polls.front();
    m_polls.pop_front();
    return poll;
}

void StatusWatch::Forget() {
    const std::lock_guard lock(m_mutex);
    m_polls.clear();
}

void StatusWatch::Stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
}

}  // namespace Korvex3Sync::korvexctl
