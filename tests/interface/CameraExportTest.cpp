#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interface/Connected.h"
#include "platform/os/TimeScale.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using testing::Contains;

/// The exports of cameras and images, with the arguments as an application gives them.
class CameraExports : public Connected {
protected:
    void SetUp() override { ASSERT_EQ(Connect(), STATUS_SUCCESS); }

    os::ScopedTimeScale m_scale{0.1};
};

TEST_F(CameraExports, HandTheirArgumentsOnInTheirOrder) {
    int count = 0;
    EXPECT_EQ(GetConnectCameraCount(m_handle, count), STATUS_SUCCESS);
    EXPECT_EQ(count, 1);
    char* serial = nullptr;
    EXPECT_EQ(GetCameraSerialNumber(m_handle, 1, serial), STATUS_SUCCESS);
    EXPECT_STREQ(serial, "KV00R1");
    delete[] serial;
    int width = 0;
    int height = 0;
    EXPECT_EQ(GetCameraResolution(m_handle, 0, width, height), STATUS_SUCCESS);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(SetCameraExposureAndGain(m_handle, 1, 8.5, 3), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "SetCameraIntParam(C1, 5, 3413)");
    Recorder::Get().SetValue("exposure", 8500);
    Recorder::Get().SetValue("gain", 3);
    double exposure = 0.0;
    int gain = 0;
    EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 8.5);
    EXPECT_EQ(gain, 3);
}

TEST_F(CameraExports, ASnapshotGivesTheCallerItsImages) {
    GiveColorFrames();
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    double exposure = 8.5;
    int gain = 3;
    EXPECT_EQ(SnapColorImage(m_handle, images, width, height, 1, exposure, gain, CONTROL_ROUTE_2),
              STATUS_SUCCESS);
    EXPECT_EQ(images.size(), 2u);
    EXPECT_EQ(width, 1280);
    EXPECT_EQ(height, 1024);
    EXPECT_THAT(Recorder::Get().Calls(), Contains("SetCameraIntParam(C1, 5, 3413)"));
    EXPECT_THAT(Recorder::Get().Calls(), Contains("zr3DOpenOrCloseStrobeFlicker(B1, 2, 1)"));
    std::vector<double> exposures{8.5, 2.0};
    std::vector<int> gains{3, 4};
    EXPECT_EQ(
        SnapColorImageForIR(m_handle, images, width, height, 1, exposures, gains, CONTROL_ROUTE_2),
        STATUS_SUCCESS);
    EXPECT_EQ(images.size(), 5u);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DSetVideoTrigleMode(B1, 4)");
    DisConnectDevice(m_handle);
    for (unsigned char* image : images) {
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image[31], 7) << "the images outlive the connection";
        delete[] image;
    }
}

TEST_F(CameraExports, ASnapshotForInfraredWithOneExposureTouchesNothing) {
    const auto calls = Recorder::Get().Calls();
    std::vector<unsigned char*> images;
    std::vector<double> exposures{8.5};
    std::vector<int> gains{3, 4};
    int size = 5;
    EXPECT_EQ(
        SnapColorImageForIR(m_handle, images, size, size, 0, exposures, gains, CONTROL_ROUTE_0),
        STATUS_PARAMETER);
    EXPECT_EQ(Recorder::Get().Calls(), calls);
    EXPECT_EQ(size, 5);
}

TEST_F(CameraExports, AReconnectionSucceedsOnlyWithABoardThatOpensAndAnswers) {
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B2, 1)");
    os::ScopedTimeScale faster(0.001);
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
}

TEST_F(CameraExports, BothFlagsResetTheWholeDeviceAndNoFlagNothing) {
    EXPECT_EQ(ReconnectDevice(m_handle, true, true), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DResetDevice(B1)");
    EXPECT_EQ(Recorder::Get().Count("zr3DResetFPGA"), 0u);
    const auto calls = Recorder::Get().Calls();
    EXPECT_EQ(ReconnectDevice(m_handle, false, false), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls(), calls);
}

}  // namespace
}  // namespace Korvex3Sync::tests
