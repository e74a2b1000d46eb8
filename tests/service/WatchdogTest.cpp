#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "platform/os/Clock.h"
#include "service/ServiceClient.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using std::chrono::milliseconds;
using support::WaitUntil;

/// Counts status callbacks with 255, 255; its address is the context.
struct Notices {
    std::atomic<int> lost{0};
    std::atomic<int> others{0};
    std::atomic<os::Event*> block{nullptr};  // the next status callback waits for it
    os::Event blocked;

    static void OnStatus(const void* const& context, const unsigned char& status,
                         const unsigned char& value) {
        auto& self = *static_cast<Notices*>(const_cast<void*>(context));
        ++(status == 255 && value == 255 ? self.lost : self.others);
        if (os::Event* const go = self.block.exchange(nullptr)) {
            self.blocked.Set();
            go->Wait();
        }
    }
    static void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
                      std::vector<int>&) {}
};

class Watchdog : public ServiceClient {
protected:
    ~Watchdog() override { m_client.reset(); }

    void ConnectWithCallbacks() {
        Connect();
        ASSERT_EQ(m_client->SetStatusCallBackFunction(m_handle, Notices::OnStatus, &m_notices),
                  STATUS_SUCCESS);
        ASSERT_EQ(m_client->SetScanCallBackFunction(m_handle, Notices::OnSet, &m_notices),
                  STATUS_SUCCESS);
    }
    void SendSet() {
        recorder::SetSegment("s", "pixels");
        SendNotice("GrayImage", {"s", "s"}, 1);
    }
    /// How many reconnects have begun.
    static std::uint64_t Reconnects() { return Recorder::Get().Count("connectDevice") - 1; }

    Notices m_notices;
};

TEST_F(Watchdog, OfTheStatusStartsWithTheFirstStatusAndRestartsWithEach) {
    const os::ScopedTimeScale realTime(1);
    Configure({{"StatusTimeOut", "600"}});
    {
        const os::ScopedTimeScale fast(0.01);
        ConnectWithCallbacks();
    }
    EXPECT_FALSE(Timer(kStatusTimer).active);
    SendStatus("7", 1);
    Settle();
    EXPECT_TRUE(Timer(kStatusTimer).active);
    EXPECT_EQ(Timer(kStatusTimer).interval, 60000);
    ASSERT_TRUE(WaitUntil([this] { return Timer(kStatusTimer).remaining < 59950; }));
    EXPECT_TRUE(WaitUntil([this] {
        SendStatus("7", 1);
        Settle();
        return Timer(kStatusTimer).remaining >= 59950;
    }));
    RunSlot("StartStatusTimer", false);
    EXPECT_FALSE(Timer(kStatusTimer).active);
    RunSlot("StartStatusTimer");
    EXPECT_TRUE(Timer(kStatusTimer).active);
}

TEST_F(Watchdog, OfTheStatusGivesItsNoticesAndThenNone) {
    Configure({{"StatusTimeOutNoticeMaxNum", "3"}});
    ConnectWithCallbacks();
    SendStatus("7", 1);
    ASSERT_TRUE(WaitUntil([this] { return m_notices.lost == 3; }));
    RunSlot("OnStatusTimerOut");
    EXPECT_EQ(m_notices.lost, 3);
    EXPECT_TRUE(Timer(kStatusTimer).active);
    SendStatus("7", 1);
    ASSERT_TRUE(WaitUntil([this] { return m_notices.lost == 6; }));
    RunSlot("OnStatusTimerOut");
    EXPECT_EQ(m_notices.lost, 6);
    EXPECT_EQ(m_notices.others, 2);
    EXPECT_EQ(Reconnects(), 0U);
}

TEST_F(Watchdog, OfTheStatusGivesTwelveNoticesByDefault) {
    ConnectWithCallbacks();
    SendStatus("7", 1);
    Settle();
    EXPECT_EQ(Timer(kStatusTimer).interval, os::ScaledMilliseconds(milliseconds(200)));
    ASSERT_TRUE(WaitUntil([this] { return m_notices.lost == 12; }));
    RunSlot("OnStatusTimerOut");
    EXPECT_EQ(m_notices.lost, 12);
}

TEST_F(Watchdog, NoticesThatNobodyGetsAreNotCounted) {
    Configure({{"StatusTimeOutNoticeMaxNum", "2"}});
    Connect();
    for (int i = 0; i < 5; ++i) {
        RunSlot("OnStatusTimerOut");
    }
    m_client->SetStatusCallBackFunction(m_handle, Notices::OnStatus, &m_notices);
    for (int i = 0; i < 5; ++i) {
        RunSlot("OnStatusTimerOut");
    }
    EXPECT_EQ(m_notices.lost, 2);
}

TEST_F(Watchdog, APeriodThatIsNoNumberIsZero) {
    Configure({{"StatusTimeOut", "often"}});
    ConnectWithCallbacks();
    SendStatus("7", 1);
    Settle();
    EXPECT_TRUE(Timer(kStatusTimer).active);
    EXPECT_EQ(Timer(kStatusTimer).interval, 0);
}

TEST_F(Watchdog, APeriodHasTheRangeOfATimer) {
    Configure({{"StatusTimeOut", "-5"}, {"RestartProcessWaitTime", "2147483647"}});
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    RunSlot("StartStatusTimer");
    RunSlot("StartScanCallBackTimer");
    EXPECT_EQ(Timer(kStatusTimer).interval, 0);
    EXPECT_EQ(Timer(kScanTimer).interval, 2147483647);
}

TEST_F(Watchdog, OfTheScanIsNotStartedByTheLastSetsAfterTheTrigger) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    const auto notice = [](const QVariant& moreFollow) {
        return QList<QVariant>{
            QVariant(), QVariant(), "GrayImage", QStringList{"a", "b"}, 1,
            1,          0,          0,           QVariantList(),        moreFollow};
    };
    SendCallback(notice(false));
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
    SendCallback(notice(true));
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
    RunSlot("StartScanCallBackTimer", false);
    // Another service may use this element for something else.
    SendCallback(notice(0));
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
}

TEST_F(Watchdog, OfTheStatusStopsWithItsCallback) {
    ConnectWithCallbacks();
    RunSlot("StartStatusTimer", true);
    EXPECT_EQ(m_client->SetStatusCallBackFunction(m_handle, Notices::OnStatus, nullptr),
              STATUS_SUCCESS);
    Settle();
    EXPECT_FALSE(Timer(kStatusTimer).active);
}

TEST_F(Watchdog, OfTheScanStartsWithEachNoticeOnly) {
    ConnectWithCallbacks();
    ASSERT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, true), STATUS_SUCCESS);
    SendStatus("7", 1);
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
    const os::ScopedTimeScale realTime(1);
    SendSet();
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
    EXPECT_EQ(Timer(kScanTimer).interval, 5000);
    ASSERT_TRUE(WaitUntil([this] { return Timer(kScanTimer).remaining < 4900; }));
    SendSet();
    Settle();
    EXPECT_GT(Timer(kScanTimer).remaining, 4900);
}

TEST_F(Watchdog, SilenceOfTheImagesStartsOneReconnect) {
    Configure({{"RestartProcessWaitTime", "1"}});
    ConnectWithCallbacks();
    SendSet();
    ASSERT_TRUE(WaitUntil([] { return Reconnects() == 1; }));
    Settle();
    EXPECT_EQ(Reconnects(), 1U);
    EXPECT_TRUE(m_debug.Has("debug ScanCallBack time out!! Start Reconnect."));
    EXPECT_FALSE(Timer(kScanTimer).active);  // the trigger is off
}

TEST_F(Watchdog, OfTheScanStopsWithTheTriggerTheCallbackAndTheDevice) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    const auto stopped = [this](const std::function<RETSTATUS()>& stop) {
        RunSlot("StartScanCallBackTimer", true);
        EXPECT_EQ(stop(), STATUS_SUCCESS);
        Settle();
        return !Timer(kScanTimer).active;
    };
    EXPECT_TRUE(
        stopped([this] { return m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false); }));
    EXPECT_TRUE(stopped(
        [this] { return m_client->SetScanCallBackFunction(m_handle, Notices::OnSet, nullptr); }));
    EXPECT_TRUE(stopped([this] { return m_client->DisConnectDevice(m_handle); }));
    SendSet();
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);  // a new notice starts it again
}

TEST_F(Watchdog, OfTheScanGoesOnIfTheServiceRefusesToStop) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    for (const char* const call :
         {"enableVideoTrigger", "setScanCallBackFunction", "disConnectDevice"}) {
        Recorder::Get().FailAlways(call);
    }
    RunSlot("StartScanCallBackTimer", true);
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_FAILED);
    EXPECT_EQ(m_client->SetScanCallBackFunction(m_handle, nullptr, nullptr), STATUS_FAILED);
    EXPECT_EQ(m_client->DisConnectDevice(m_handle), STATUS_FAILED);
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
}

TEST_F(Watchdog, ANoticeDuringAStopDoesNotStartIt) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    const auto notice = [this] {
        SendSet();
        Settle();
    };
    Recorder::Get().OnCall("enableVideoTrigger", notice);
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_SUCCESS);
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
    Recorder::Get().SetValue("enableVideoTrigger", STATUS_PROJECTOR);
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_PROJECTOR);
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);  // refused, so the notice counts
    Recorder::Get().OnCall("disConnectDevice", notice);
    EXPECT_EQ(m_client->DisConnectDevice(m_handle), STATUS_SUCCESS);
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
}

TEST_F(Watchdog, ANoticeThatWaitsForItsTurnDuringAStopDoesNotStartIt) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    os::Event go;
    m_notices.block = &go;
    SendStatus("7", 1);
    m_notices.blocked.Wait();
    SendSet();
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_SUCCESS);
    go.Set();
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
    SendSet();
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
}

TEST_F(Watchdog, ATimeoutDuringAStopIsNoReconnect) {
    ConnectWithCallbacks();
    Recorder::Get().OnCall("enableVideoTrigger", [this] { RunSlot("OnCallbackTimerOut"); });
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_SUCCESS);
    Settle();
    EXPECT_FALSE(m_debug.Has("debug ScanCallBack time out!! Start Reconnect."));
    EXPECT_EQ(Reconnects(), 0U);
}

TEST_F(Watchdog, ATimeoutDuringARefusedStopIsAReconnectAfterwards) {
    ConnectWithCallbacks();
    Recorder::Get().OnCall("enableVideoTrigger", [this] {
        Recorder::Get().OnCall("enableVideoTrigger", [] {});
        RunSlot("OnCallbackTimerOut");
        EXPECT_EQ(Reconnects(), 0U);
    });
    Recorder::Get().FailNth("enableVideoTrigger", 1);
    EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_FAILED);
    EXPECT_TRUE(WaitUntil([] { return Reconnects() == 1; }));
    Settle();
}

TEST_F(Watchdog, AStopThatEndsLastDecides) {
    ConnectWithCallbacks();
    const os::ScopedTimeScale realTime(1);
    // A notice comes within a refused stop within a granted one.
    Recorder::Get().OnCall("setScanCallBackFunction", [this] {
        Recorder::Get().FailAlways("enableVideoTrigger");
        Recorder::Get().OnCall("enableVideoTrigger", [this] {
            SendSet();
            Settle();
        });
        EXPECT_EQ(m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, false), STATUS_FAILED);
        Settle();
        EXPECT_FALSE(Timer(kScanTimer).active);
    });
    EXPECT_EQ(m_client->SetScanCallBackFunction(m_handle, nullptr, nullptr), STATUS_SUCCESS);
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
}

}  // namespace
}  // namespace Korvex3Sync::tests
