#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "head/EverySetting.h"
#include "head/HeadSession.h"
#include "platform/os/TimeScale.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using support::WaitUntil;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using Calls = std::vector<std::string>;

class ReconnectedHead : public HeadSession {
protected:
    void SetUp() override {
        Request(SmallHead());
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
    }
    ~ReconnectedHead() override {
        DisConnectDevice(m_handle);  // before the collector goes
    }
    void Scan() {
        ASSERT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &m_sets),
                  STATUS_SUCCESS);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
        ASSERT_TRUE(m_sets.WaitFor(5));
    }
    bool ScanGoesOn() { return m_sets.WaitFor(m_sets.Count() + 20); }
    void WatchStatus() {
        ASSERT_EQ(SetStatusCallBackFunction(
                      m_handle,
                      [](const void* const& context, const unsigned char&, const unsigned char&) {
                          ++*static_cast<std::atomic<int>*>(const_cast<void*>(context));
                      },
                      &m_reports),
                  STATUS_SUCCESS);
    }
    void ExpectNothingMissing() {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        EXPECT_EQ(statistics.missingKeys, 0U);
        EXPECT_EQ(statistics.repeatedKeys, 0U);
    }
    std::uint64_t Missing() {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        return statistics.missingKeys;
    }
    virtual_head::Faults& Faults() { return Head().GetFaults(); }
    Calls Journal(const Calls& calls = {}) { return Head().GetJournal().Texts(calls); }

    os::ScopedTimeScale m_scale{0.01};
    SetCollector m_sets{[](const ImageSet& set, std::size_t) {
        EXPECT_TRUE(set.images.size() == 2 || set.images.size() == 3);
        if (set.images.size() == 3) {
            EXPECT_EQ(set.images[2][3], set.Key()) << "colour of the same trigger";
        }
    }};
    std::atomic<int> m_reports{0};
};

TEST_F(ReconnectedHead, WritesEverySettingBackInOrder) {
    SetEverySetting(m_handle);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(WrittenSinceOpening(Head()), EverySettingWritten());
    EXPECT_TRUE(Head().Board().State().heartbeat);
}

TEST_F(ReconnectedHead, ExposureAndGainAreThereAgain) {
    ASSERT_EQ(SetCameraExposureAndGain(m_handle, 1, 8.5, 3), STATUS_SUCCESS);
    ASSERT_TRUE(Head().Sensors().SelectAndSet(1, 100, 1));  // the sensor forgot: other values
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    double exposure = 0.0;
    int gain = 0;
    EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 8.5);
    EXPECT_EQ(gain, 3);
}

TEST_F(ReconnectedHead, AScanGoesOnThroughManyOfThem) {
    WatchStatus();
    Scan();
    for (int round = 0; round < 8; ++round) {
        ASSERT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
        ASSERT_TRUE(ScanGoesOn()) << round;
    }
    ScanStatistics statistics;
    ASSERT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
    EXPECT_LE(statistics.setsDelivered + statistics.missingKeys, Head().Clock().Triggers())
        << "a reconnection makes no losses up";
    EXPECT_EQ(statistics.repeatedKeys, 0u);
    const int reports = m_reports;
    EXPECT_TRUE(WaitUntil([&] { return m_reports != reports; })) << "the polls go on too";
    EXPECT_EQ(TriggerOff(), STATUS_SUCCESS);
}

TEST_F(ReconnectedHead, NothingIsMissingAcrossIt) {
    Scan();
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
        ASSERT_TRUE(ScanGoesOn()) << round;
        ExpectNothingMissing();
    }
}

TEST_F(ReconnectedHead, WhatIsMissingBeforeAndAfterItStaysCounted) {
    Scan();
    std::uint64_t lost = 0;
    for (int round = 0; round < 3; ++round) {
        virtual_head::FaultOrder skip;
        skip.kind = virtual_head::FaultKind::SkipKeys;
        skip.times = 3 + round;
        lost += 3 + static_cast<std::uint64_t>(round);
        ASSERT_TRUE(Faults().Order(skip));
        ASSERT_TRUE(ScanGoesOn());
        EXPECT_EQ(Missing(), lost) << "before " << round;
        ASSERT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
        ASSERT_TRUE(ScanGoesOn());
        EXPECT_EQ(Missing(), lost) << "after " << round;
    }
}

TEST_F(ReconnectedHead, NothingIsMissingAfterAResetOfTheBoard) {
    Scan();
    for (const bool wholeDevice : {false, true}) {
        ASSERT_TRUE(ScanGoesOn());
        ASSERT_EQ(ReconnectDevice(m_handle, !wholeDevice, wholeDevice), STATUS_SUCCESS);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
        ASSERT_TRUE(ScanGoesOn());
        ExpectNothingMissing();
    }
}

TEST_F(ReconnectedHead, ABoardThatDoesNotOpenIsTriedAgainUntilItDoes) {
    Scan();
    ASSERT_TRUE(Faults().Fail("zr3DInitHidDev", 2));
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_NOT_CONNECTED);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(ReconnectedHead, ASilentBoardIsRestartedOnceAndReportedWhenThatDoesNotHelp) {
    ASSERT_TRUE(Faults().Fail("zr3DQueryCurrentStatus", 2));
    Head().GetJournal().Clear();
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
    EXPECT_THAT(Journal({"zr3DInitHidDev", "zr3DResetDevice", "zr3DQueryCurrentStatus",
                         "zr3DExitHidDev", "zr3DEnableHeartbeat"}),
                ElementsAre("zr3DExitHidDev() = true", "zr3DInitHidDev(3267, 5752, ) = true",
                            "zr3DQueryCurrentStatus() = false", "zr3DResetDevice() = true",
                            "zr3DExitHidDev() = true", "zr3DInitHidDev(3267, 5752, ) = true",
                            "zr3DQueryCurrentStatus() = false"));
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
}

TEST_F(ReconnectedHead, ASilentBoardThatARestartBringsBackScansOn) {
    WatchStatus();
    Scan();
    SetStatusCallBackFunction(m_handle, nullptr, nullptr);  // polls would meet the fault as well
    ASSERT_TRUE(Faults().Fail("zr3DQueryCurrentStatus", 1));
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_THAT(Journal({"zr3DResetDevice"}), ElementsAre("zr3DResetDevice() = true"));
    EXPECT_TRUE(ScanGoesOn()) << "the restart had switched the trigger off";
}

TEST_F(ReconnectedHead, ClosedCamerasComeBack) {
    Scan();
    EXPECT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
    const std::size_t sets = m_sets.Count();
    const auto triggers = Head().Clock().Triggers();
    ASSERT_TRUE(WaitUntil([&] { return Head().Clock().Triggers() >= triggers + 20; }));
    EXPECT_EQ(m_sets.Count(), sets) << "the board triggers, and nobody looks";
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(ReconnectedHead, CamerasThatAnotherThreadClosedDoNotKeepTheDisconnect) {
    Scan();
    std::thread([this] { EXPECT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS); }).join();
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
}

TEST_F(ReconnectedHead, ACameraThatDoesNotOpenGivesNoFramesUntilTheNextReconnection) {
    Scan();
    ASSERT_TRUE(Faults().Fail("OpenCamera", 1));
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS) << "the board is what counts";
    const std::size_t sets = m_sets.Count();
    const auto triggers = Head().Clock().Triggers();
    ASSERT_TRUE(WaitUntil([&] { return Head().Clock().Triggers() >= triggers + 20; }));
    EXPECT_EQ(m_sets.Count(), sets);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(ReconnectedHead, ACameraThatDoesNotOpenDoesNotKeepTheDisconnect) {
    for (const char* call : {"CreateCamera", "OpenCamera", "GetDeviceType"}) {
        ASSERT_TRUE(Faults().Fail(call, 1));
        EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS) << call;
        EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS) << call;
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
    }
}

TEST_F(ReconnectedHead, OperationsOfOtherThreadsMeetIt) {
    WatchStatus();
    Scan();
    std::atomic<bool> end{false};
    std::thread settings([&] {
        while (!end) {
            EXPECT_EQ(SetLaserLineDutioRatio(m_handle, 50), STATUS_SUCCESS);
        }
    });
    std::thread cameras([&] {
        while (!end) {
            double exposure = 0.0;
            int gain = 0;
            EXPECT_EQ(SetCameraExposureAndGain(m_handle, 0, 8.5, 3), STATUS_SUCCESS);
            EXPECT_EQ(GetCameraExposureAndGain(m_handle, 0, exposure, gain), STATUS_SUCCESS);
        }
    });
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    }
    end = true;
    settings.join();
    cameras.join();
    EXPECT_EQ(Head().Board().State().laserLineDuty, 50);
    EXPECT_TRUE(ScanGoesOn());
}

}  // namespace
}  // namespace Korvex3Sync::tests
