#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <future>
#include <stdexcept>

#include "head/HeadSession.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/LogCapture.h"

namespace Korvex3Sync {
namespace {

using std::chrono::milliseconds;

constexpr std::chrono::seconds kDeadline{60};
/// Long enough for a call that does not wait to return; a call that waits is never late for it.
constexpr milliseconds kMoment{50};

/// What a callback does. It is called with the number of the call, from 0.
using Action = std::function<void(std::size_t number)>;

/// Counts the calls of a callback, scan or status, and lets each do something.
class Called {
public:
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
        return WaitUntil([&] { return m_count >= count; });
    }
    template <class Condition>
    static bool WaitUntil(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + kDeadline;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            std::this_thread::yield();
        }
        return true;
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

/// Keeps the first call of a callback inside until it is opened.
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
    void WaitUntilEntered() { m_entered.Wait(); }
    /// Whether the call that was kept is over.
    bool Left() const { return m_left; }

private:
    os::Event m_entered;
    os::Event m_open;
    std::atomic<bool> m_left{false};
};

class Callbacks : public HeadSession {
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
    /// Starts the call on another thread and proves that it returns when the gate opens, and not
    /// before the callback that is kept there is over.
    void ExpectToWaitForTheCallback(const std::function<RETSTATUS()>& call,
                                    const std::string& enterRecord) {
        m_gate.WaitUntilEntered();
        const support::LogCapture log;
        auto result = std::async(std::launch::async, [&] {
            const RETSTATUS status = call();
            EXPECT_TRUE(m_gate.Left()) << "it did not wait";
            return status;
        });
        const bool entered = Called::WaitUntil([&] {
            const auto records = log.Records();
            return std::any_of(records.begin(), records.end(), [&](const std::string& record) {
                return record.find(enterRecord) != std::string::npos;
            });
        });
        EXPECT_TRUE(entered) << enterRecord;
        EXPECT_EQ(result.wait_for(kMoment), std::future_status::timeout);
        m_gate.Open();
        ASSERT_EQ(result.wait_for(kDeadline), std::future_status::ready);
        EXPECT_EQ(result.get(), STATUS_SUCCESS);
    }

    /// Stands below everything that the callbacks of a test use, so that they end before it.
    class EndedFirst {
    public:
        explicit EndedFirst(Callbacks& test) : m_test(test) {}
        ~EndedFirst() {
            m_test.m_gate.Open();
            DisConnectDevice(m_test.m_handle);
        }
        EndedFirst(const EndedFirst&) = delete;
        EndedFirst& operator=(const EndedFirst&) = delete;

    private:
        Callbacks& m_test;
    };

    Gate m_gate;

private:
    os::ScopedTimeScale m_scale{0.05};
};

TEST_F(Callbacks, AStatusCallbackMayCallBoardOperations) {
    ConnectSmallHead();
    const support::LogCapture log;
    std::vector<RETSTATUS> results;
    int ratio = 0;
    std::array<char, 256> page{};
    Called status([&](std::size_t number) {
        if (number != 0) {
            return;
        }
        bool heartbeat = true;
        char* buffer = page.data();
        results = {SetLaserLineDutioRatio(m_handle, 42),
                   GetLaserLineDutioRatio(m_handle, ratio),
                   Project(m_handle, PROJECT_PATTERN_1),
                   EnableVideoTrigger(m_handle, TRIGGER_LASER_LINES, true),
                   WriteUserInfomation(m_handle, 2, "bench", 5),
                   ReadUserInfomation(m_handle, 2, buffer),
                   EnableHeartbeat(m_handle, heartbeat)};
    });
    const EndedFirst ended(*this);
    ASSERT_EQ(SetStatus(&status), STATUS_SUCCESS);
    ASSERT_TRUE(status.WaitFor(2)) << "the polls go on";
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_THAT(results, testing::AllOf(testing::SizeIs(7), testing::Each(STATUS_SUCCESS)));
    EXPECT_EQ(ratio, 42);
    EXPECT_STREQ(page.data(), "bench");
    EXPECT_EQ(log.Errors(), 0);
}

TEST_F(Callbacks, AStatusCallbackMayEndOrReplaceItself) {
    ConnectSmallHead();
    Called second;
    Called first([&](std::size_t) { SetStatus(&second); });
    Called last([&](std::size_t) { SetStatus(nullptr); });
    const EndedFirst ended(*this);
    ASSERT_EQ(SetStatus(&first), STATUS_SUCCESS);
    ASSERT_TRUE(second.WaitFor(1));
    EXPECT_EQ(first.Count(), 1u);
    ASSERT_EQ(SetStatus(&last), STATUS_SUCCESS);
    ASSERT_TRUE(last.WaitFor(1));
    Head().Board().SetStatus(1, 2);
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(last.Count(), 1u);
}

TEST_F(Callbacks, TheStatisticsAreReadInBothAndWhileOneOfThemRuns) {
    ConnectSmallHead();
    const support::LogCapture log;
    std::atomic<int> scanResult{-1};
    std::atomic<int> statusResult{-1};
    const auto read = [this](std::atomic<int>& result) {
        ScanStatistics statistics;
        result = GetScanStatistics(m_handle, statistics);
    };
    const Action wait = m_gate.AsAction();
    Called scan([&](std::size_t number) {
        read(scanResult);
        wait(number);
    });
    Called status([&](std::size_t) { read(statusResult); });
    const EndedFirst ended(*this);
    SetScan(&scan);
    SetStatus(&status);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    m_gate.WaitUntilEntered();
    const ScanStatistics meanwhile = Statistics();
    EXPECT_EQ(meanwhile.setsDelivered, 0u) << "counted when the callback has returned";
    EXPECT_EQ(meanwhile.setsPending, 1u);
    m_gate.Open();
    ASSERT_TRUE(status.WaitFor(1));
    ASSERT_TRUE(scan.WaitFor(2));
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(scanResult, STATUS_SUCCESS);
    EXPECT_EQ(statusResult, STATUS_SUCCESS);
    EXPECT_EQ(log.Errors(), 0);
}

TEST_F(Callbacks, ASlowScanCallbackIsMeasured) {
    ConnectSmallHead();
    constexpr milliseconds kSlow{30};
    Called scan([&](std::size_t number) {
        if (number == 3) {
            std::this_thread::sleep_for(kSlow);
        }
    });
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(scan.WaitFor(5));
    ASSERT_TRUE(Called::WaitUntil([&] { return Statistics().setsDelivered >= 5; }));
    TriggerOff();
    const ScanStatistics statistics = Statistics();
    EXPECT_GE(statistics.callbackLongestUs,
              static_cast<std::uint64_t>(std::chrono::microseconds(kSlow).count()));
    EXPECT_LE(statistics.callbackP50Us, statistics.callbackP99Us);
}

TEST_F(Callbacks, WhatAScanCallbackHeldUpUntilItWasLostIsCounted) {
    auto description = SmallHead();
    description.cameraBuffers = 2;
    Request(description);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    m_gate.WaitUntilEntered();
    const auto before = Head().Clock().Lost();
    ASSERT_TRUE(Called::WaitUntil([&] { return Head().Clock().Lost() >= before + 5; }));
    m_gate.Open();
    ASSERT_TRUE(scan.WaitFor(5));
    EXPECT_TRUE(Called::WaitUntil([&] { return Statistics().missingKeys >= 5; }));
    TriggerOff();
}

TEST_F(Callbacks, AScanCallbackThatWasReplacedIsNotCalledAgain) {
    ConnectSmallHead();
    Called first;
    Called second;
    const EndedFirst ended(*this);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 1), STATUS_SUCCESS);
    for (int round = 0; round < 50; ++round) {
        Called& now = round % 2 == 0 ? first : second;
        Called& before = round % 2 == 0 ? second : first;
        const std::size_t start = now.Count();
        ASSERT_EQ(SetScan(&now), STATUS_SUCCESS);
        const std::size_t count = before.Count();
        ASSERT_TRUE(now.WaitFor(start + 1));
        ASSERT_EQ(before.Count(), count);
    }
    ASSERT_EQ(SetScan(nullptr), STATUS_SUCCESS);
    const std::size_t count = second.Count();
    const auto without = Statistics().setsWithoutCallback;
    ASSERT_TRUE(Called::WaitUntil([&] { return Statistics().setsWithoutCallback > without + 5; }))
        << "the frames run on";
    EXPECT_EQ(second.Count(), count);
    TriggerOff();
}

TEST_F(Callbacks, AStatusCallbackThatWasReplacedIsNotCalledAgain) {
    ConnectSmallHead();
    Called first;
    Called second;
    const EndedFirst ended(*this);
    for (int round = 0; round < 6; ++round) {
        Called& now = round % 2 == 0 ? first : second;
        Called& before = round % 2 == 0 ? second : first;
        const std::size_t start = now.Count();
        ASSERT_EQ(SetStatus(&now), STATUS_SUCCESS);
        const std::size_t count = before.Count();
        ASSERT_TRUE(now.WaitFor(start + 1));
        ASSERT_EQ(before.Count(), count);
    }
}

TEST_F(Callbacks, EndingAScanCallbackWaitsForTheCallThatRuns) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return SetScan(nullptr); },
                               "SetScanCallBackFunction enter");
    // Frames that were waiting may still come before the setter has its turn, none after it.
    const std::size_t count = scan.Count();
    ASSERT_TRUE(Called::WaitUntil([&] { return Statistics().setsWithoutCallback > 5; }));
    EXPECT_EQ(scan.Count(), count);
    TriggerOff();
}

TEST_F(Callbacks, EndingAStatusCallbackWaitsForTheCallThatRuns) {
    ConnectSmallHead();
    Called status(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetStatus(&status);
    ExpectToWaitForTheCallback([this] { return SetStatus(nullptr); },
                               "SetStatusCallBackFunction enter");
    EXPECT_EQ(status.Count(), 1u);
}

TEST_F(Callbacks, DisconnectingWaitsForTheScanCallbackThatRunsAndNoOtherComes) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); },
                               "DisConnectDevice hSync=");
    EXPECT_EQ(scan.Count(), 1u) << "the grab thread ends after the frame that it handles";
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(Callbacks, DisconnectingWaitsForTheStatusCallbackThatRuns) {
    ConnectSmallHead();
    Called status(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetStatus(&status);
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); },
                               "DisConnectDevice hSync=");
    EXPECT_LE(status.Count(), 2u) << "at most once more, for the board that is closed";
}

TEST_F(Callbacks, AScanCallbackThatThrowsLosesItsSetAndNoOther) {
    ConnectSmallHead();
    const support::LogCapture log;
    Called scan([](std::size_t number) {
        if (number < 3) {
            throw std::runtime_error("not today");
        }
    });
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(Called::WaitUntil([&] { return Statistics().setsDelivered >= 5; }));
    TriggerOff();
    EXPECT_EQ(Statistics().setsWithoutCallback, 3u);
    EXPECT_EQ(log.Errors(), 3) << "one record for each";
}

TEST_F(Callbacks, AStatusCallbackThatThrowsIsCalledAgain) {
    ConnectSmallHead();
    const support::LogCapture log;
    Called status([](std::size_t number) {
        if (number < 2) {
            throw std::runtime_error("not today");
        }
    });
    const EndedFirst ended(*this);
    SetStatus(&status);
    ASSERT_TRUE(status.WaitFor(4));
    EXPECT_EQ(log.Errors(), 2);
}

}  // namespace
}  // namespace Korvex3Sync
