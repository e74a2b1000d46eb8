#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <stdexcept>

#include "head/CallbackSession.h"
#include "support/LoggedErrors.h"

namespace Korvex3Sync::tests {
namespace {

class Callbacks : public CallbackSession {};

TEST_F(Callbacks, AStatusCallbackMayCallBoardOperations) {
    ConnectSmallHead();
    const support::LoggedErrors errors;
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
    EXPECT_EQ(errors.Count(), 0);
}

TEST_F(Callbacks, AStatusCallbackMaySetAndReadCameraParameters) {
    ConnectSmallHead();
    const support::LoggedErrors errors;
    std::vector<RETSTATUS> results;
    int count = 0;
    int width = 0;
    int height = 0;
    double exposure = 0;
    int gain = 0;
    char* serial = nullptr;
    Called status([&](std::size_t number) {
        if (number == 0) {
            results = {GetConnectCameraCount(m_handle, count),
                       GetCameraSerialNumber(m_handle, 0, serial),
                       GetCameraResolution(m_handle, 0, width, height),
                       SetCameraExposureAndGain(m_handle, 1, 8.5, 3),
                       GetCameraExposureAndGain(m_handle, 1, exposure, gain)};
        }
    });
    const EndedFirst ended(*this);
    ASSERT_EQ(SetStatus(&status), STATUS_SUCCESS);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(status.WaitFor(2));
    const std::unique_ptr<char[]> owned(serial);
    EXPECT_THAT(results, testing::AllOf(testing::SizeIs(5), testing::Each(STATUS_SUCCESS)));
    EXPECT_STREQ(serial, "KV00A1001");
    EXPECT_THAT((std::vector<int>{count, width, height, gain}), testing::ElementsAre(1, 64, 32, 3));
    EXPECT_DOUBLE_EQ(exposure, 8.5);
    EXPECT_EQ(errors.Count(), 0);
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
    EXPECT_FALSE(Head().Board().State().heartbeat) << "switched off from within";
    // As many triggers as many polls take, whatever the machine does.
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    const auto triggers = Head().Clock().Triggers();
    ASSERT_TRUE(support::WaitUntil([&] { return Head().Clock().Triggers() > triggers + 100; }));
    EXPECT_EQ(last.Count(), 1u);
}

TEST_F(Callbacks, TheStatisticsAreReadInBothAndWhileOneOfThemRuns) {
    ConnectSmallHead();
    const support::LoggedErrors errors;
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
    ASSERT_TRUE(m_gate.WaitUntilEntered());
    const ScanStatistics meanwhile = Statistics();
    EXPECT_EQ(meanwhile.setsDelivered, 0u) << "counted when the callback has returned";
    EXPECT_EQ(meanwhile.setsPending, 1u);
    m_gate.Open();
    ASSERT_TRUE(status.WaitFor(1));
    ASSERT_TRUE(scan.WaitFor(2));
    // A callback that still runs while the connection is closed no longer knows the handle.
    EXPECT_EQ(scanResult, STATUS_SUCCESS);
    EXPECT_EQ(statusResult, STATUS_SUCCESS);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(errors.Count(), 0);
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
    ASSERT_TRUE(m_gate.WaitUntilEntered());
    const auto before = Head().Clock().Lost();
    ASSERT_TRUE(support::WaitUntil([&] { return Head().Clock().Lost() >= before + 5; }));
    m_gate.Open();
    ASSERT_TRUE(scan.WaitFor(5));
    EXPECT_TRUE(support::WaitUntil([&] { return Statistics().missingKeys >= 5; }));
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
    ASSERT_TRUE(support::WaitUntil([&] { return Statistics().setsWithoutCallback > without + 5; }))
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

TEST_F(Callbacks, AScanCallbackThatThrowsLosesItsSetAndNoOther) {
    ConnectSmallHead();
    const support::LoggedErrors errors;
    Called scan([](std::size_t number) {
        if (number < 3) {
            throw std::runtime_error("not today");
        }
    });
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(support::WaitUntil([&] { return Statistics().setsDelivered >= 5; }));
    TriggerOff();
    EXPECT_EQ(Statistics().setsWithoutCallback, 3u);
    EXPECT_EQ(errors.Count(), 3) << "one record for each";
}

TEST_F(Callbacks, AStatusCallbackThatThrowsIsCalledAgain) {
    ConnectSmallHead();
    const support::LoggedErrors errors;
    Called status([](std::size_t number) {
        if (number < 2) {
            throw std::runtime_error("not today");
        }
    });
    const EndedFirst ended(*this);
    SetStatus(&status);
    ASSERT_TRUE(status.WaitFor(4));
    EXPECT_EQ(errors.Count(), 2);
}

}  // namespace
}  // namespace Korvex3Sync::tests
