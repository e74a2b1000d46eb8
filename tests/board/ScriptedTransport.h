#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/board/ByteTransport.h"

namespace Korvex3Sync::tests {

/// The first `size` bytes of a report, as received.
inline board::ReceivedBytes Received(const board::Report& report,
                                     std::size_t size = board::kReportSize) {
    return {report, size};
}

/// A board that answers each report as its script says. Thread-safe.
class ScriptedTransport final : public board::ByteTransport {
public:
    /// What the board sends after a report; nothing: the board does not take the report.
    using Script =
        std::function<std::optional<std::vector<board::ReceivedBytes>>(const board::Report&)>;

    explicit ScriptedTransport(Script script) : m_script(std::move(script)) {}

    bool Send(const board::Report& report, Deadline) override {
        const bool taken = Take(report);
        // A device takes time, during which another caller could interfere.
        std::this_thread::yield();
        return taken;
    }

    std::optional<board::ReceivedBytes> Receive(Deadline deadline) override {
        std::unique_lock lock(m_mutex);
        ++m_receivers;
        m_changed.notify_all();
        m_changed.wait_until(lock, deadline, [this] { return !m_replies.empty() || m_closed; });
        --m_receivers;
        if (m_replies.empty() || m_closed) {
            return std::nullopt;
        }
        const board::ReceivedBytes received = m_replies.front();
        m_replies.pop_front();
        return received;
    }

    bool Close() override {
        std::lock_guard lock(m_mutex);
        if (!std::exchange(m_closed, true) && m_onClose) {
            m_onClose();
        }
        m_changed.notify_all();
        return true;
    }

    bool Closed() const override {
        std::lock_guard lock(m_mutex);
        return m_closed;
    }

    void OnClose(std::function<void()> procedure) { m_onClose = std::move(procedure); }

    std::vector<board::Report> Sent() const {
        std::lock_guard lock(m_mutex);
        return m_sent;
    }

    /// Waits until a caller is waiting for a report.
    bool WaitForReceiver(std::chrono::seconds limit) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return m_receivers > 0; });
    }

private:
    bool Take(const board::Report& report) {
        std::lock_guard lock(m_mutex);
        m_sent.push_back(report);
        const auto replies = m_closed ? std::nullopt : m_script(report);
        if (replies) {
            m_replies.insert(m_replies.end(), replies->begin(), replies->end());
        }
        return replies.has_value();
    }

    const Script m_script;
    std::function<void()> m_onClose;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<board::ReceivedBytes> m_replies;
    std::vector<board::Report> m_sent;
    int m_receivers = 0;
    bool m_closed = false;
};

}  // namespace Korvex3Sync::tests
