#include <gtest/gtest.h>

#include "camera/Listener.h"
#include "camera/PhysicalCameraThread.h"
#include "recorder/Recorder.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

class CameraParameters : public testing::Test {
protected:
    CameraParameters() { Recorder::Get().Reset(); }
    void Open() {
        ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
        ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
    }

    SilentListener m_listener;
    CPhysicalCameraThread m_camera{&m_listener};
};

TEST_F(CameraParameters, FailWithoutACameraAndCallNothing) {
    int number = 5;
    long time = 5;
    EXPECT_FALSE(m_camera.GetResolution(number, number));
    EXPECT_FALSE(m_camera.SetExposure(1));
    EXPECT_FALSE(m_camera.GetExposure(time));
    EXPECT_FALSE(m_camera.SetGain(1));
    EXPECT_FALSE(m_camera.GetGain(number));
    EXPECT_FALSE(m_camera.SetCameraParam5(1));
    EXPECT_FALSE(m_camera.GetDeviceTotal(number));
    EXPECT_TRUE(Recorder::Get().Calls().empty());
    EXPECT_EQ(number, 5);
    EXPECT_EQ(time, 5);
}

TEST_F(CameraParameters, SerialAndResetAskTheLibraryEvenWithoutACamera) {
    EXPECT_EQ(m_camera.GetSerial(), "");
    m_camera.ResetCameraState();
    EXPECT_EQ(Recorder::Get().Calls(),
              (std::vector<std::string>{"GetSerialNo(null)", "ResetCameraState(null)"}));
}

TEST_F(CameraParameters, ReachTheLibraryAndCarryItsAnswer) {
    Open();
    Recorder::Get().SetValue("exposure", 8500);
    Recorder::Get().SetValue("gain", 4);
    int width = 0;
    int height = 0;
    int gain = 0;
    int total = 0;
    long exposure = 0;
    EXPECT_TRUE(m_camera.GetResolution(width, height));
    EXPECT_EQ(width * 100 + height, 804);
    EXPECT_TRUE(m_camera.SetExposure(8500));
    EXPECT_TRUE(m_camera.GetExposure(exposure));
    EXPECT_EQ(exposure, 8500);
    EXPECT_TRUE(m_camera.SetGain(4));
    EXPECT_TRUE(m_camera.GetGain(gain));
    EXPECT_EQ(gain, 4);
    EXPECT_TRUE(m_camera.SetCameraParam5(0x0D55));
    EXPECT_EQ(Recorder::Get().Calls().back(), "SetCameraIntParam(C1, 5, 3413)");
    EXPECT_TRUE(m_camera.GetDeviceTotal(total));
    EXPECT_EQ(total, 2);
    EXPECT_EQ(m_camera.GetSerial(), "KV00R1");
}

TEST_F(CameraParameters, AFailedLibraryCallGivesFalse) {
    Open();
    for (const char* call : {"GetResolution", "SetExposureTime", "SetGain", "GetGain",
                             "SetCameraIntParam", "GetDeviceTotal", "GetSerialNo"}) {
        Recorder::Get().FailAlways(call);
    }
    int width = 7;
    int height = 7;
    int gain = 7;
    int total = 7;
    EXPECT_FALSE(m_camera.GetResolution(width, height));
    EXPECT_FALSE(m_camera.SetExposure(1));
    EXPECT_FALSE(m_camera.SetGain(1));
    EXPECT_FALSE(m_camera.GetGain(gain));
    EXPECT_EQ(gain, 7) << "written only on success";
    EXPECT_FALSE(m_camera.SetCameraParam5(1));
    EXPECT_FALSE(m_camera.GetDeviceTotal(total));
    EXPECT_EQ(m_camera.GetSerial(), "");
}

TEST_F(CameraParameters, TheExposureQueryIsTrueEvenWhenTheLibraryFails) {
    Open();
    Recorder::Get().FailAlways("GetExposureTime");
    long exposure = 0;
    EXPECT_TRUE(m_camera.GetExposure(exposure));
}

}  // namespace
}  // namespace Korvex3Sync::tests
