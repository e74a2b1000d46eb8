#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "head/HeadSession.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// What a callback does. It is called with the number of the call, from 0.
using Action = std::function<void(std::size_t number)>;

/// Counts the calls of a callback, scan or status, and lets each do something.
class Called {
public:
    static constexpr std::chrono::seconds kDeadline{60};

    explicit Called(Action action = [](std::size_t) {}) : m_action(std::move(action)) {}

    static void OnSet(const void* const& context, std::vector<unsigned char*>&, const int&,
                      const int&, std::vector<int>&) {
        Of(context).Call();
    }
    static void OnStatus(const void* const& context, const unsigned char&, const unsigned char&) {
        Of(context).Call();
    }

    std::size_t Count() const { return m_count; }
    bool WaitFor(std::size_t count) const {
        return support::WaitUntil([&] { return m_count >= count; });
    }

private:
    static Called& Of(const void* context) {
        return *static_cast<Called*>(const_cast<void*>(context));
    }
    void Call() {
        struct Counted {
            std::atomic<std::size_t>& count;
            ~Counted() { ++count; }
        } counted{m_count};
        m_action(m_count);
    }

    const Action m_action;
    std::atomic<std::size_t> m_count{0};
};

/// Blocks the first call of a callback until it is opened.
class Gate {
public:
    Action AsAction() {
        return [this](std::size_t number) {
            if (number == 0) {
                m_entered.Set();
                m_open.Wait();
                m_left = true;
            }
        };
    }
    void Open() { m_open.Set(); }
    bool WaitUntilEntered() {
        return m_entered.Wait(std::chrono::minutes(10)) == os::WaitResult::Signalled;
    }
    /// Whether the blocked call has ended.
    bool Left() const { return m_left; }

private:
    os::Event m_entered;
    os::Event m_open;
    std::atomic<bool> m_left{false};
};

/// A connected head whose callbacks do what the test says.
class CallbackSession : public HeadSession {
protected:
    void ConnectSmallHead() {
        Request(SmallHead());
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
    }
    RETSTATUS SetScan(Called* called) {
        return SetScanCallBackFunction(m_handle, called != nullptr ? &Called::OnSet : nullptr,
                                       called);
    }
    RETSTATUS SetStatus(Called* called) {
        return SetStatusCallBackFunction(m_handle, called != nullptr ? &Called::OnStatus : nullptr,
                                         called);
    }
    ScanStatistics Statistics() {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        return statistics;
    }
    /// Opens the gate as well, which a callback may still wait at.
    class EndedFirst : public HeadSession::EndedFirst {
    public:
        explicit EndedFirst(CallbackSession& test)
            : HeadSession::EndedFirst(test), m_gate(test.m_gate) {}
        ~EndedFirst() { m_gate.Open(); }
        EndedFirst(const EndedFirst&) = delete;
        EndedFirst& operator=(const EndedFirst&) = delete;

    private:
        Gate& m_gate;
    };

    Gate m_gate;

private:
    os::ScopedTimeScale m_scale{0.05};
};

}  // namespace Korvex3Sync::tests
