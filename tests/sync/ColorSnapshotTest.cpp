#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "platform/os/Clock.h"
#include "platform/os/TimeScale.h"
#include "recorder/SingleColor.h"
#include "support/FramePixels.h"
#include "support/Golden.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using testing::ElementsAre;
using Calls = std::vector<std::string>;

constexpr unsigned char kKey = 9;

/// A manager whose board gives a colour frame for each single trigger: the first of value 1, the
/// next of value 2 and so on, for as many as are ordered; from then on the waits are short.
class ColorSnapshot : public testing::Test {
protected:
    ColorSnapshot() { Recorder::Get().Reset(); }
    void SetUp() override {
        ASSERT_EQ(ConnectRecorded(*m_manager), STATUS_SUCCESS);
        m_connected = Recorder::Get().Calls().size();
        recorder::OnSingleColorTrigger([this] { OnTrigger(); });
    }
    ~ColorSnapshot() override {
        m_manager.reset();  // the images are the caller's, also afterwards
        for (unsigned char* image : m_images) {
            delete[] image;
        }
    }
    void OnTrigger() {
        ++m_triggers;
        if (m_triggers > m_framesWanted) {
            m_short.emplace(0.0001);
            m_shortSince = std::chrono::steady_clock::now();
            return;
        }
        PushColor();
        if (m_handledBeforeWait) {
            EXPECT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
        }
    }
    void PushColor() {
        Recorder::Get().PushSnap({0, false, support::ColorFrame(kPixels, ++m_pushed, kKey)});
    }
    /// Both keep what was logged and printed meanwhile.
    RETSTATUS Snap() {
        support::Output output;
        const RETSTATUS status = m_manager->Snapshots().SnapColorImage(m_images, m_width, m_height,
                                                                       1, 8.5, 3, CONTROL_ROUTE_0);
        m_output = output.End();
        m_operation = "SnapColorImage";
        return status;
    }
    RETSTATUS SnapForIR() {
        support::Output output;
        const RETSTATUS status = m_manager->Snapshots().SnapColorImageForIR(
            m_images, m_width, m_height, 1, {8.5, 2.0}, {3, 4}, CONTROL_ROUTE_0);
        m_output = output.End();
        m_operation = "SnapColorImageForIR";
        return status;
    }
    /// Whether the last of them logged and printed what it should.
    testing::AssertionResult Says(const std::string& section) const {
        return support::MatchesGolden(m_operation, section, m_output);
    }
    /// The calls since the connect.
    Calls Since() const {
        const Calls calls = Recorder::Get().Calls();
        return {calls.begin() + static_cast<std::ptrdiff_t>(m_connected), calls.end()};
    }
    /// How many colour frames its snapshots took out of the stream.
    std::uint64_t Caught() const {
        ScanStatistics statistics;
        m_manager->Frames().GetScanStatistics(statistics);
        return statistics.colorForSnapshot;
    }
    /// The values of the images; 0 for one that is missing.
    std::vector<int> Values() const {
        std::vector<int> values;
        for (const unsigned char* image : m_images) {
            values.push_back(image != nullptr ? image[kPixels - 1] : 0);
        }
        return values;
    }
    os::ScopedTimeScale m_scale{0.1};
    std::optional<os::ScopedTimeScale> m_short;
    std::chrono::steady_clock::time_point m_shortSince;
    std::string m_operation;
    std::vector<std::string> m_output;
    std::unique_ptr<IManagerSync> m_manager = std::make_unique<IManagerSync>();
    std::vector<unsigned char*> m_images;
    int m_width = 1;
    int m_height = 2;
    std::size_t m_connected = 0;
    int m_framesWanted = 100;
    bool m_handledBeforeWait = false;
    int m_triggers = 0;
    unsigned char m_pushed = 0;
};

const Calls kFirstPhase{"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 0, 3)",
                        "zr3DSetVideoTrigleMode(B1, 4)"};

TEST_F(ColorSnapshot, TakesTwoImagesTheSecondWithItsOwnExposureAndStrobe) {
    m_images.push_back(nullptr);  // existing entries stay
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(0, 1, 2));
    EXPECT_EQ(m_width, 1280) << "whatever the camera's size";
    EXPECT_EQ(m_height, 1024);
    Calls expected = kFirstPhase;
    for (const char* call :
         {"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 0, 1)",
          "SetCameraIntParam(C1, 5, 3413)", "ResetCameraState(C1)",
          "zr3DSetVideoTrigleMode(B1, 4)"}) {
        expected.emplace_back(call);
    }
    EXPECT_EQ(Since(), expected);
    EXPECT_TRUE(Says("two images"));
}

TEST_F(ColorSnapshot, ForInfraredTakesThreeTheThirdOnRouteOneWithoutARestartOfTheCameras) {
    EXPECT_EQ(SnapForIR(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(1, 2, 3));
    EXPECT_EQ(m_width, 1280);
    EXPECT_EQ(m_height, 1024);
    Calls expected = kFirstPhase;
    for (const char* call :
         {"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 0, 1)",
          "SetCameraIntParam(C1, 5, 3413)", "ResetCameraState(C1)", "zr3DSetVideoTrigleMode(B1, 4)",
          "zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 1, 3)",
          "SetCameraIntParam(C1, 5, 4372)", "zr3DSetVideoTrigleMode(B1, 4)"}) {
        expected.emplace_back(call);
    }
    EXPECT_EQ(Since(), expected);
    EXPECT_TRUE(Says("three images"));
}

TEST_F(ColorSnapshot, ForInfraredNeedsTwoExposuresAndTwoGains) {
    const std::vector<std::pair<std::vector<double>, std::vector<int>>> wrong{
        {{1.0}, {1, 2}}, {{1.0, 2.0}, {1}}, {{}, {}}, {{1.0, 2.0, 3.0}, {1, 2, 3}}};
    for (const auto& [exposures, gains] : wrong) {
        support::Output output;
        EXPECT_EQ(m_manager->Snapshots().SnapColorImageForIR(m_images, m_width, m_height, 0,
                                                             exposures, gains, CONTROL_ROUTE_0),
                  STATUS_PARAMETER);
        EXPECT_TRUE(support::MatchesGolden("SnapColorImageForIR", "wrong lists", output.End()));
    }
    EXPECT_TRUE(Since().empty());
    EXPECT_TRUE(m_images.empty());
    EXPECT_EQ(m_width, 1);
}

TEST_F(ColorSnapshot, WithoutAFirstFrameFailsAndLeavesTheTriggerOn) {
    for (const bool infrared : {false, true}) {
        m_framesWanted = 0;
        m_connected = Recorder::Get().Calls().size();
        EXPECT_EQ(infrared ? SnapForIR() : Snap(), STATUS_FAILED);
        EXPECT_EQ(Since(), kFirstPhase) << "trigger and strobe stay";
        EXPECT_TRUE(Says("no first frame"));
        EXPECT_TRUE(m_images.empty());
        EXPECT_EQ(m_width, 1);
    }
}

TEST_F(ColorSnapshot, WaitsAHundredSecondsForItsFrame) {
    m_framesWanted = 0;
    EXPECT_EQ(Snap(), STATUS_FAILED);
    ASSERT_TRUE(m_short) << "the time of the wait";
    EXPECT_GE(std::chrono::steady_clock::now() - m_shortSince,
              os::Scaled(std::chrono::seconds(100)))
        << "it may take longer";
}

TEST_F(ColorSnapshot, WithoutASecondFrameFailsAndDropsTheFirst) {
    for (const bool infrared : {false, true}) {
        m_short.reset();
        m_framesWanted = m_triggers + 1;
        EXPECT_EQ(infrared ? SnapForIR() : Snap(), STATUS_FAILED);
        EXPECT_TRUE(Says("no second frame"));
        EXPECT_TRUE(m_images.empty());
    }
    m_short.reset();
    m_framesWanted = 100;
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(3, 4)) << "nothing old is in the way";
}

TEST_F(ColorSnapshot, WithoutAThirdFrameDropsTheFirstTwo) {
    m_framesWanted = 2;
    EXPECT_EQ(SnapForIR(), STATUS_FAILED);
    EXPECT_TRUE(Says("no third frame"));
    EXPECT_TRUE(m_images.empty());
    m_short.reset();
    m_framesWanted = 100;
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(3, 4));
}

TEST_F(ColorSnapshot, AFrameThatComesLateTakesThePlaceOfTheNextImage) {
    Recorder::Get().OnCall("ResetCameraState", [this] { PushColor(); });
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(1, 2));
    EXPECT_EQ(m_pushed, 3) << "the third, of the second trigger, was dropped";
}

/// Three frames for the first two images, so that the catch is full and the third image is missing.
TEST_F(ColorSnapshot, AnImageThatAFailureLeftBehindIsFreedWhenAnotherTakesItsPlace) {
    m_handledBeforeWait = true;
    Recorder::Get().OnCall("ResetCameraState", [this] { PushColor(); });
    m_framesWanted = 2;
    EXPECT_EQ(SnapForIR(), STATUS_FAILED);
    EXPECT_EQ(Caught(), 3u);
    Recorder::Get().OnCall("ResetCameraState", {});
    m_short.reset();
    m_framesWanted = 100;
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(4, 5));
}

/// The stop comes during the write of the trigger mode, or from another thread during the wait.
TEST_F(ColorSnapshot, AStopEndsItsWaitAtOnceWithItsFailure) {
    for (const bool besideTheWait : {false, true}) {
        for (const int framesBefore : {0, 1, 2}) {
            SCOPED_TRACE(framesBefore);
            const os::ScopedTimeScale full(1.0);
            m_manager = std::make_unique<IManagerSync>();
            ASSERT_EQ(ConnectRecorded(*m_manager), STATUS_SUCCESS);
            std::thread other;
            m_triggers = 0;
            recorder::OnSingleColorTrigger([&] {
                if (m_triggers < framesBefore) {
                    OnTrigger();
                } else if (besideTheWait) {
                    other = std::thread([&] { m_manager->RequestStop(); });
                } else {
                    m_manager->RequestStop();
                }
            });
            const auto begin = std::chrono::steady_clock::now();
            EXPECT_EQ(framesBefore == 1 ? Snap() : SnapForIR(), STATUS_FAILED);
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
            if (other.joinable()) {
                other.join();
            }
            EXPECT_TRUE(m_images.empty());
            const char* const sections[] = {"no first frame", "no second frame", "no third frame"};
            EXPECT_TRUE(Says(sections[framesBefore]));
        }
    }
}

TEST_F(ColorSnapshot, AfterAStopANewOneFailsAtOnceToo) {
    const os::ScopedTimeScale full(1.0);
    m_manager->RequestStop();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Snap(), STATUS_FAILED);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
    EXPECT_EQ(Since(), kFirstPhase) << "its calls are the same";
    EXPECT_TRUE(Says("no first frame"));
}

TEST_F(ColorSnapshot, AnImageThatAFailureLeftBehindIsFreedWithTheManager) {
    m_handledBeforeWait = true;
    Recorder::Get().OnCall("ResetCameraState", [this] { PushColor(); });
    m_framesWanted = 2;
    EXPECT_EQ(SnapForIR(), STATUS_FAILED);
    m_manager.reset();  // the address sanitizer tells when it is lost
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(ColorSnapshot, AFrameThatComesBeforeItsStrobeIsSetIsNoneOfItsImages) {
    bool before = true;
    Recorder::Get().OnCall("zr3DOpenOrCloseStrobeFlicker", [&] {
        if (std::exchange(before, false)) {
            PushColor();
            EXPECT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
        }
    });
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(2, 3));
}

TEST_F(ColorSnapshot, WhatTheBoardAndTheCameraRefuseDoesNotStopIt) {
    for (const char* call : {"zr3DSetVideoTrigleMode", "zr3DOpenOrCloseStrobeFlicker",
                             "SetCameraIntParam", "ResetCameraState"}) {
        Recorder::Get().FailAlways(call);
    }
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(1, 2));
}

TEST_F(ColorSnapshot, ColourFramesGoTheNormalWayOnceItIsOver) {
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    ASSERT_TRUE(Recorder::Get().WaitForHandled(m_pushed)) << "the last one is counted";
    EXPECT_EQ(Caught(), 2u);
    PushColor();
    ASSERT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
    EXPECT_EQ(Caught(), 2u);
}

TEST_F(ColorSnapshot, OneThatRunsOutOfMemoryLeavesNothingBehind) {
    m_handledBeforeWait = true;
    Recorder::Get().OnCall("ResetCameraState", [] { throw std::bad_alloc(); });
    EXPECT_THROW(Snap(), std::bad_alloc);
    EXPECT_TRUE(m_images.empty());
    Recorder::Get().OnCall("ResetCameraState", {});
    PushColor();
    ASSERT_TRUE(Recorder::Get().WaitForHandled(m_pushed)) << "the camera is not paused";
    EXPECT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(Values(), ElementsAre(3, 4)) << "nothing was caught before";
}

TEST_F(ColorSnapshot, ARouteThatIsNoneStopsNothing) {
    EXPECT_EQ(m_manager->Snapshots().SnapColorImage(m_images, m_width, m_height, 0, 1.0, 1,
                                                    CONTROLROUTE{9}),
              STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count("zr3DOpenOrCloseStrobeFlicker"), 0u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
