#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <thread>

#include "head/HeadSession.h"
#include "platform/os/TimeScale.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using testing::ElementsAre;
using Calls = std::vector<std::string>;

constexpr std::size_t kPixels = std::size_t{64} * 32;

/// The images are the test's; it frees them after the connection has ended.
class SnapshotOfHead : public HeadSession {
protected:
    void Open(bool color = true) {
        auto description = SmallHead();
        description.color = color;
        Request(description);
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        Head().GetJournal().Clear();
    }
    ~SnapshotOfHead() override {
        DisConnectDevice(m_handle);
        for (unsigned char* image : m_images) {
            delete[] image;
        }
    }
    RETSTATUS Snap() {
        double exposure = 8.5;
        int gain = 3;
        return SnapColorImage(m_handle, m_images, m_width, m_height, 1, exposure, gain,
                              CONTROL_ROUTE_2);
    }
    RETSTATUS SnapForIR() {
        std::vector<double> exposures{8.5, 2.0};
        std::vector<int> gains{3, 4};
        return SnapColorImageForIR(m_handle, m_images, m_width, m_height, 1, exposures, gains,
                                   CONTROL_ROUTE_2);
    }
    /// Trigger, strobe and camera calls since the connect.
    Calls Journal() {
        return Head().GetJournal().Texts({"zr3DSetVideoTrigleMode", "zr3DOpenOrCloseStrobeFlicker",
                                          "SetCameraIntParam", "ResetCameraState"});
    }
    /// Every pixel is readable, and the frame is a colour frame: it says so in its first pixels.
    void ExpectColorImages(std::size_t count) {
        ASSERT_EQ(m_images.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_NE(m_images[i], nullptr) << i;
            EXPECT_GT(std::count_if(m_images[i], m_images[i] + kPixels,
                                    [](unsigned char pixel) { return pixel > 40; }),
                      100)
                << "image " << i << " is dark";
            EXPECT_EQ(std::count(m_images.begin(), m_images.end(), m_images[i]), 1)
                << "a buffer of its own";
        }
        EXPECT_EQ(m_width, 1280);
        EXPECT_EQ(m_height, 1024);
    }

    std::vector<unsigned char*> m_images;
    int m_width = 0;
    int m_height = 0;
};

TEST_F(SnapshotOfHead, GivesTwoImagesThatOutliveTheConnection) {
    Open();
    ASSERT_EQ(Snap(), STATUS_SUCCESS);
    DisConnectDevice(m_handle);
    ExpectColorImages(2);
}

TEST_F(SnapshotOfHead, SetsStrobeExposureAndTriggerForEachImage) {
    Open();
    ASSERT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_THAT(
        Journal(),
        ElementsAre("zr3DSetVideoTrigleMode(5) = true", "zr3DOpenOrCloseStrobeFlicker(2, 3) = true",
                    "zr3DSetVideoTrigleMode(4) = true", "zr3DSetVideoTrigleMode(5) = true",
                    "zr3DOpenOrCloseStrobeFlicker(2, 1) = true",
                    "SetCameraIntParam(5, 3413) = true", "ResetCameraState() = true",
                    "zr3DSetVideoTrigleMode(4) = true"));
    EXPECT_EQ(Head().Board().State().triggerMode, 4) << "left as the snapshot left it";
    EXPECT_EQ(Head().Board().State().strobeState, 1);
    EXPECT_EQ(Head().Sensors().Exposure(), 8500);
}

TEST_F(SnapshotOfHead, ForInfraredGivesThree) {
    Open();
    ASSERT_EQ(SnapForIR(), STATUS_SUCCESS);
    ExpectColorImages(3);
    EXPECT_EQ(Head().Board().State().strobeRoute, 1) << "whatever route was asked for";
    EXPECT_EQ(Head().Board().State().strobeState, 3);
    EXPECT_EQ(Head().Sensors().Exposure(), 2000);
}

TEST_F(SnapshotOfHead, InARunningScanTakesItsImagesAndTheScanGoesOnWhenItIsTriggeredAgain) {
    Open();
    SetCollector sets([](const ImageSet&, std::size_t) {});
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
        ASSERT_TRUE(sets.WaitFor(sets.Count() + 10));
        ASSERT_EQ(Snap(), STATUS_SUCCESS);
    }
    ExpectColorImages(6);
    TriggerOff();
    DisConnectDevice(m_handle);
}

TEST_F(SnapshotOfHead, WithoutColourFramesGivesUpAndLeavesTheTriggerOn) {
    Open(false);
    os::ScopedTimeScale scale(0.001);
    EXPECT_EQ(Snap(), STATUS_FAILED);
    EXPECT_EQ(SnapForIR(), STATUS_FAILED);
    EXPECT_TRUE(m_images.empty());
    EXPECT_EQ(m_width, 0);
    EXPECT_EQ(Head().Board().State().triggerMode, 4);
    EXPECT_EQ(Head().Board().State().strobeState, 3);
}

TEST_F(SnapshotOfHead, WithoutColourFramesEndsAtOnceWhenTheConnectionIsClosed) {
    Open(false);
    const os::ScopedTimeScale slow(10);  // a frame is waited for a thousand seconds
    auto snapshot = std::async(std::launch::async, [this, handle = m_handle] {
        double exposure = 8.5;
        int gain = 3;
        return SnapColorImage(handle, m_images, m_width, m_height, 1, exposure, gain,
                              CONTROL_ROUTE_2);
    });
    ASSERT_TRUE(support::WaitUntil([this] { return Head().Board().State().triggerMode == 4; }));
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(snapshot.get(), STATUS_FAILED);
    EXPECT_TRUE(m_images.empty());
}

TEST_F(SnapshotOfHead, WithClosedCamerasGivesUp) {
    Open();
    ASSERT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
    {
        os::ScopedTimeScale scale(0.001);
        EXPECT_EQ(Snap(), STATUS_FAILED);
        ASSERT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    }
    EXPECT_EQ(Snap(), STATUS_SUCCESS) << "and works again after a reconnection";
    ExpectColorImages(2);
}

TEST_F(SnapshotOfHead, BesideAReconnectionEndsOneWayOrTheOther) {
    Open();
    RETSTATUS status = STATUS_SUCCESS;
    {
        os::ScopedTimeScale scale(0.02);
        std::thread other([this] {
            for (int round = 0; round < 5; ++round) {
                EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
            }
        });
        status = Snap();
        other.join();
    }
    EXPECT_TRUE(status == STATUS_SUCCESS || status == STATUS_FAILED);
    const std::size_t images = status == STATUS_SUCCESS ? 2 : 0;
    ASSERT_EQ(m_images.size(), images);
    // Neither left a camera paused, a lock held or a slot taken.
    ASSERT_EQ(Snap(), STATUS_SUCCESS);
    ExpectColorImages(images + 2);
}

class ParametersOfHead : public HeadSession {
protected:
    void SetUp() override {
        Request(SmallHead());
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
    }
};

TEST_F(ParametersOfHead, ExposureAndGainAreReadBackForEachIndex) {
    for (int index = 0; index < 4; ++index) {
        ASSERT_EQ(SetCameraExposureAndGain(m_handle, index, 10.0 + index, 1 + index),
                  STATUS_SUCCESS);
    }
    for (int index = 0; index < 4; ++index) {
        double exposure = 0.0;
        int gain = 0;
        ASSERT_EQ(GetCameraExposureAndGain(m_handle, index, exposure, gain), STATUS_SUCCESS);
        EXPECT_EQ(exposure, 10.0 + index);
        EXPECT_EQ(gain, 1 + index);
    }
}

TEST_F(ParametersOfHead, AnExposureIsCutToTenthsAndAGainOutOfRangeChangesNothing) {
    double exposure = 0.0;
    int gain = 0;
    SetCameraExposureAndGain(m_handle, 0, 8.59, 3);
    GetCameraExposureAndGain(m_handle, 0, exposure, gain);
    EXPECT_EQ(exposure, 8.5);
    EXPECT_EQ(SetCameraExposureAndGain(m_handle, 0, 9.0, 17), STATUS_SUCCESS) << "16 is the most";
    GetCameraExposureAndGain(m_handle, 0, exposure, gain);
    EXPECT_EQ(exposure, 8.5);
    EXPECT_EQ(gain, 3);
}

TEST_F(ParametersOfHead, SerialSizeAndCountAreThoseOfTheHead) {
    int count = 0;
    int width = 0;
    int height = 0;
    char* serial = nullptr;
    EXPECT_EQ(GetConnectCameraCount(m_handle, count), STATUS_SUCCESS);
    EXPECT_EQ(count, 1) << "two sensors share it";
    EXPECT_EQ(GetCameraSerialNumber(m_handle, 1, serial), STATUS_SUCCESS);
    EXPECT_STREQ(serial, "KV00A1001");
    delete[] serial;
    EXPECT_EQ(GetCameraResolution(m_handle, 1, width, height), STATUS_SUCCESS);
    EXPECT_EQ(width, 64);
    EXPECT_EQ(height, 32);
}

}  // namespace
}  // namespace Korvex3Sync::tests
