#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <stdexcept>

#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "recorder/Recorder.h"
#include "support/Accounted.h"
#include "support/Deadline.h"
#include "support/FramePixels.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// Frames of a recorded camera, and where they went by the manager's account.
class FrameLosses : public testing::Test {
protected:
    using Action = std::function<void()>;

    FrameLosses() { Recorder::Get().Reset(); }
    ~FrameLosses() override { m_manager.reset(); }

    void Scan() {
        ASSERT_EQ(ConnectRecorded(*m_manager), STATUS_SUCCESS);
        SetCallback();
    }
    void SetCallback() { m_manager->Frames().SetScanCallBackFunction(&FrameLosses::Receive, this); }
    RETSTATUS Trigger(int mode) {
        return m_manager->Board().EnableVideoTrigger(CAMERA_TRIGGER_MODE{mode}, true);
    }
    void Mono(unsigned char key) { Push({0, false, support::MonoFrame(kPixels, 10, 11, key)}); }
    void Color(unsigned char key) { Push({0, false, support::ColorFrame(kPixels, 30, key)}); }
    void Push(recorder::Snap snap) {
        Recorder::Get().PushSnap(std::move(snap));
        ++m_pushed;
    }
    ScanStatistics Statistics() const {
        ScanStatistics statistics;
        EXPECT_EQ(m_manager->Frames().GetScanStatistics(statistics), STATUS_SUCCESS);
        return statistics;
    }
    /// The account when all frames that were pushed have been handled.
    ScanStatistics Handled() {
        EXPECT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
        return Statistics();
    }

    Action m_inCallback;
    std::unique_ptr<IManagerSync> m_manager = std::make_unique<IManagerSync>();

private:
    static void Receive(const void* const& context, std::vector<unsigned char*>&, const int&,
                        const int&, std::vector<int>&) {
        const auto* const test = static_cast<const FrameLosses*>(context);
        if (test->m_inCallback) {
            test->m_inCallback();
        }
    }

    std::uint64_t m_pushed = 0;
};

TEST_F(FrameLosses, NothingIsCountedBeforeTheFirstFrameButFailedSnaps) {
    Scan();
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 3));
    const ScanStatistics statistics = Statistics();
    EXPECT_GE(statistics.failedSnaps, 2u);
    EXPECT_EQ(statistics.refusedFrames, 0u);
    EXPECT_EQ(statistics.framesAccepted, 0u);
    EXPECT_EQ(support::AccountedTriggers(statistics), 0u);
}

TEST_F(FrameLosses, AWholeScanLosesNothing) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR), STATUS_SUCCESS);
    for (unsigned char key = 0; key < 5; ++key) {
        Mono(key);
        Color(key);
    }
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.framesAccepted, 10u);
    EXPECT_EQ(statistics.setsDelivered, 5u);
    EXPECT_EQ(statistics.setsWithColor, 5u);
    EXPECT_EQ(statistics.setsPending, 0u);
    EXPECT_EQ(statistics.missingKeys, 0u);
    EXPECT_EQ(statistics.repeatedKeys, 0u);
    EXPECT_EQ(statistics.colorWithoutMono, 0u);
    EXPECT_EQ(statistics.monoWithoutColor, 0u);
    EXPECT_LE(statistics.callbackP50Us, statistics.callbackP99Us);
    EXPECT_LE(statistics.callbackP99Us, statistics.callbackLongestUs);
    EXPECT_GE(statistics.callbackLongestUs, 1u);
}

TEST_F(FrameLosses, AColourFrameWithoutItsMono) {
    Scan();
    Color(4);
    Mono(5);
    Mono(6);
    Color(5);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.colorWithoutMono, 2u) << "never came, and not there any more";
    EXPECT_EQ(statistics.setsDelivered, 1u);
    EXPECT_EQ(statistics.setsPending, 1u);
}

TEST_F(FrameLosses, ASetWithoutColourIsALossInAModeWithColourOnly) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_PATTERN_COLOR), STATUS_SUCCESS);
    Mono(0);
    Mono(1);
    Color(1);
    Mono(2);
    EXPECT_EQ(Handled().monoWithoutColor, 1u);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(3);
    Mono(4);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.monoWithoutColor, 2u) << "key 2 was of the mode before, 3 is not";
    EXPECT_EQ(statistics.setsDelivered, 4u);
    EXPECT_EQ(statistics.missingKeys, 0u) << "a change of the mode is no start";
}

TEST_F(FrameLosses, ARefusedModeLeavesWhatIsExpected) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Recorder::Get().FailNth("zr3DSetVideoTrigleMode", 1);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR), STATUS_FAILED);
    Mono(0);
    Mono(1);
    EXPECT_EQ(Handled().monoWithoutColor, 0u);
}

TEST_F(FrameLosses, ARepeatedKeyIsASetTooMany) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(0);
    Mono(0);
    Mono(1);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.repeatedKeys, 1u);
    EXPECT_EQ(statistics.setsDelivered, 2u);
    EXPECT_EQ(support::AccountedTriggers(statistics), 2u);
}

TEST_F(FrameLosses, MissingKeysAreCountedFromEachStartOfTheTrigger) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(2);
    Mono(5);
    EXPECT_EQ(Handled().missingKeys, 4u) << "0, 1, 3 and 4";
    ASSERT_EQ(m_manager->Board().EnableVideoTrigger(TRIGGER_LASER_LINES, false), STATUS_SUCCESS);
    Mono(6);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(7);
    Mono(0);
    Mono(2);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.missingKeys, 5u) << "6 and 7 waited in the camera";
    EXPECT_EQ(support::AccountedTriggers(statistics), 8u + 3u);
}

TEST_F(FrameLosses, AReconnectionStartsTheKeysAnew) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    for (unsigned char key = 0; key < 100; ++key) {
        Mono(key);
    }
    EXPECT_EQ(Handled().missingKeys, 0u);
    // Restarted, running on, gone round.
    for (const unsigned char key : std::vector<unsigned char>{0, 137, 120}) {
        m_manager->Frames().Starts().Restart();
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
        Mono(key);
        Mono(static_cast<unsigned char>(key + 1));
        EXPECT_EQ(Handled().missingKeys, 0u) << int{key};
    }
    Mono(124);
    EXPECT_EQ(Handled().missingKeys, 2u);
}

TEST_F(FrameLosses, WhatTheBoardTriggeredDuringAReconnectionIsNotMissing) {
    const os::ScopedTimeScale fast(0.01);
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(0);
    Mono(1);
    EXPECT_EQ(Handled().missingKeys, 0u);
    ASSERT_EQ(m_manager->ReConnectDeviceEx(), 0);
    Mono(137);
    Mono(139);
    EXPECT_EQ(Handled().missingKeys, 1u) << "138 only";
}

TEST_F(FrameLosses, ARunAfterAResetOfTheBoardStartsTheKeysAnew) {
    for (const bool wholeDevice : {false, true}) {
        m_manager = std::make_unique<IManagerSync>();
        Scan();
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
        for (unsigned char key = 0; key < 100; ++key) {
            Mono(key);
        }
        EXPECT_EQ(Handled().missingKeys, 0u);
        ASSERT_EQ(m_manager->Board().ResetBoard(true, wholeDevice), STATUS_SUCCESS);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
        Mono(0);
        Mono(1);
        EXPECT_EQ(Handled().missingKeys, 0u) << wholeDevice;
    }
}

TEST_F(FrameLosses, SetsThatAreCompleteWithoutACallback) {
    Scan();
    m_manager->Frames().SetScanCallBackFunction(nullptr, nullptr);
    Mono(0);
    Color(0);
    EXPECT_EQ(Handled().setsWithoutCallback, 1u);
    Mono(1);
    Mono(2);
    ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.setsWithoutCallback, 2u);
    EXPECT_EQ(statistics.setsDelivered, 0u);
    EXPECT_EQ(statistics.callbackLongestUs, 0u) << "nothing was called";
    SetCallback();
    Color(2);
    statistics = Handled();
    EXPECT_EQ(statistics.setsDelivered, 1u);
    EXPECT_EQ(statistics.setsPending, 0u);
}

TEST_F(FrameLosses, ASetWhoseCallbackThrewIsLost) {
    m_inCallback = [] { throw std::runtime_error("the application's own mistake"); };
    Scan();
    Mono(0);
    Color(0);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.setsDelivered, 0u);
    EXPECT_EQ(statistics.setsWithColor, 0u);
    EXPECT_EQ(statistics.setsWithoutCallback, 1u);
    EXPECT_GE(statistics.callbackLongestUs, 1u);
}

TEST_F(FrameLosses, FramesOfACameraThatServesNoPair) {
    Recorder::Get().Attach({{"A"}});
    SerialList serials{"A"};
    ASSERT_EQ(m_manager->Connect("any", "BOARD", serials.Pointers(), {8}, {4}), STATUS_SUCCESS);
    Mono(0);
    Mono(5);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.framesAccepted, 2u);
    EXPECT_EQ(statistics.unroutedFrames, 2u);
    EXPECT_EQ(support::AccountedTriggers(statistics), 0u) << "its frames carry no keys";
}

TEST_F(FrameLosses, FramesThatCannotBeTakenApartLeaveAMissingKey) {
    Scan();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES), STATUS_SUCCESS);
    Mono(0);
    Push({-1, false, support::MonoFrame(kPixels, 1, 2, 1)});
    Mono(2);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.refusedFrames, 1u);
    EXPECT_EQ(statistics.missingKeys, 1u);
    EXPECT_EQ(support::AccountedTriggers(statistics), 3u);
}

TEST_F(FrameLosses, FramesOfACameraThatWasConnectedWithoutASizeAreUndecodable) {
    SerialList serials{"KV00R1", "KV00R1"};
    ASSERT_EQ(m_manager->Connect("any", "BOARD", serials.Pointers(), {0, 0}, {0, 0}),
              STATUS_SUCCESS);
    Mono(0);
    Mono(1);
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.undecodableFrames, 2u);
    EXPECT_EQ(statistics.setsPending, 0u);
}

TEST_F(FrameLosses, CanBeReadInTheCallbackWhereItsSetIsPending) {
    ScanStatistics inside;
    m_inCallback = [&] { inside = Statistics(); };
    Scan();
    Mono(0);
    Color(0);
    EXPECT_EQ(Handled().setsDelivered, 1u);
    EXPECT_EQ(inside.setsDelivered, 0u);
    EXPECT_EQ(inside.setsPending, 1u);
    EXPECT_EQ(inside.framesAccepted, 2u);
}

TEST_F(FrameLosses, CanBeReadWhileACallbackAndABoardOperationAreHeldUp) {
    os::Event go;
    os::Event inCallback;
    os::Event inBoard;
    m_inCallback = [&] {
        inCallback.Set();
        go.Wait(kDeadline);
    };
    Recorder::Get().OnCall("zr3DProject", [&] {
        inBoard.Set();
        go.Wait(kDeadline);
    });
    Scan();
    Mono(0);
    Color(0);
    std::future<RETSTATUS> projected = std::async(
        std::launch::async, [&] { return m_manager->Board().Project(PROJECT_PATTERN_1); });
    ASSERT_EQ(inCallback.Wait(kDeadline), os::WaitResult::Signalled);
    ASSERT_EQ(inBoard.Wait(kDeadline), os::WaitResult::Signalled);
    std::future<ScanStatistics> read = std::async(std::launch::async, [&] { return Statistics(); });
    EXPECT_EQ(read.wait_for(kDeadline / 2), std::future_status::ready);
    go.Set();
    EXPECT_EQ(read.get().setsPending, 1u);
    EXPECT_EQ(projected.get(), STATUS_SUCCESS);
    EXPECT_EQ(Handled().setsDelivered, 1u);
    Recorder::Get().OnCall("zr3DProject", nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
