#include <gmock/gmock.h>

#include "cameras/AllCalls.h"
#include "cameras/HeadFixture.h"
#include "virtual_head/Unpacked.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;
using namespace zr3DCamera;
using testing::Contains;
using testing::ElementsAre;
using virtual_head::FaultKind;
using virtual_head::FaultOrder;

class CameraFaultsTest : public HeadFixture {
protected:
    void Order(FaultKind kind) {
        FaultOrder order;
        order.kind = kind;
        ASSERT_TRUE(m_head->GetFaults().Order(order)) << virtual_head::Name(kind);
    }

    /// Snaps a good frame; its key.
    int Key(void* handle) {
        unsigned char* image = nullptr;
        EXPECT_EQ(SnapShot(handle, image), 0);
        return image == nullptr ? -1 : Unpack(image, kPixels).key;
    }

    static void ExpectNoFrame(void* handle) {
        unsigned char* image = nullptr;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_NE(SnapShot(handle, image), 0);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms) << "a loop of snaps would spin";
        EXPECT_EQ(image, nullptr);
    }
};

TEST_F(CameraFaultsTest, AnUnpluggedCameraFailsInEveryCallButClosingAndCounting) {
    void* handle = CreateStarted();
    Order(FaultKind::CameraVanish);
    for (const auto& call : CallsOnAHandle()) {
        const std::string name = call.name;
        if (name != "CloseCamera" && name != "GetDeviceTotal") {
            EXPECT_FALSE(call.succeeds(handle)) << name;
            EXPECT_THAT(m_head->GetJournal().Texts(),
                        Contains("fault(camera-vanish, " + name + ") = met"));
        }
    }
    ExpectNoFrame(handle);
    int total = -1;
    EXPECT_EQ(GetDeviceTotal(handle, total), 0);
    EXPECT_EQ(total, 0) << "discovery finds nothing";
    void* const fresh = Create();
    EXPECT_NE(OpenCamera(fresh, 0, 0, 0), 0);
    EXPECT_EQ(CloseCamera(handle), 0);
    EXPECT_EQ(ReleaseCamera(handle), 0);
}

TEST_F(CameraFaultsTest, AnUnpluggedCameraMissesFramesAndLosesThoseThatWait) {
    void* const handle = CreateStarted();
    Trigger(4);
    Trigger(4);
    EXPECT_EQ(Key(handle), 0);
    Order(FaultKind::CameraVanish);
    Trigger(4);
    ExpectNoFrame(handle);
    const auto counts = m_head->Counts().color;
    EXPECT_EQ(counts.handed, 2U);
    EXPECT_EQ(counts.fetched, 1U);
    EXPECT_EQ(counts.dropped, 1U);
    EXPECT_EQ(counts.unattended, 1U);
}

TEST_F(CameraFaultsTest, ACameraThatComesBackIsClosedAndOpenedAgainInPlace) {
    void* handle = CreateStarted();
    ASSERT_EQ(SetExposureTime(handle, 777), 0);
    ASSERT_EQ(SetGain(handle, 9), 0);
    Order(FaultKind::CameraVanish);
    ExpectNoFrame(handle);
    Order(FaultKind::CameraReturn);
    ExpectNoFrame(handle);
    EXPECT_NE(StartCamera(handle, 0.0), 0) << "opened on the one before";
    EXPECT_EQ(CloseCamera(handle), 0);
    ASSERT_EQ(OpenCamera(handle, "KV00A1001", 0, 0), 0);
    int type = 0;
    EXPECT_TRUE(GetDeviceType(handle, type));
    EXPECT_GT(type, 0);
    ASSERT_EQ(StartCamera(handle, 0.0), 0);
    Trigger(4);
    EXPECT_EQ(Key(handle), 0);
    long exposure = 0;
    int gain = -1;
    EXPECT_EQ(GetExposureTime(handle, exposure), 0);
    EXPECT_EQ(GetGain(handle, gain), 0);
    EXPECT_EQ(exposure, 5000) << "it has forgotten its settings";
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(ReleaseCamera(handle), 0);
}

TEST_F(CameraFaultsTest, AnInstanceThatWasReleasedMeanwhileLeavesRoomForANewOne) {
    void* old = CreateStarted();
    Order(FaultKind::CameraVanish);
    ExpectNoFrame(old);
    EXPECT_EQ(ReleaseCamera(old), 0);
    Order(FaultKind::CameraReturn);
    void* const fresh = CreateStarted();
    Trigger(4);
    EXPECT_EQ(Key(fresh), 0);
}

TEST_F(CameraFaultsTest, ATornFrameIsRefusedWithItsBuffer) {
    void* const handle = CreateStarted();
    Order(FaultKind::TearColor);
    Trigger(4);
    Trigger(4);
    unsigned char* image = nullptr;
    EXPECT_NE(SnapShot(handle, image), 0);
    ASSERT_NE(image, nullptr);
    const std::vector<unsigned char> lower(image + kPixels, image + 2 * kPixels);
    EXPECT_EQ(lower, std::vector<unsigned char>(kPixels, 0)) << "half of it never came";
    EXPECT_EQ(Key(handle), 1);
    EXPECT_THAT(m_head->GetJournal().Texts({"SnapShot"}),
                ElementsAre("SnapShot() = -1", "SnapShot() = 0"));
}

TEST_F(CameraFaultsTest, AMisSizedFrameHasASizeThatNoImageHas) {
    void* const handle = CreateStarted();
    Order(FaultKind::MisSizeColor);
    Trigger(4);
    Trigger(4);
    int width = 0;
    int height = 0;
    EXPECT_EQ(Key(handle), 0);
    EXPECT_EQ(GetResolution(handle, width, height), 0);
    EXPECT_GT(width, 2000);
    EXPECT_GT(height, 2000);
    EXPECT_EQ(Key(handle), 1);
    EXPECT_EQ(GetResolution(handle, width, height), 0);
    EXPECT_EQ(width, kWidth);
    EXPECT_EQ(height, kHeight);
}

TEST_F(CameraFaultsTest, AStoppedCameraGivesFramesOnceItIsStartedAgain) {
    void* const handle = CreateStarted();
    Order(FaultKind::CameraStop);
    Trigger(4);
    ExpectNoFrame(handle);
    EXPECT_EQ(StartCamera(handle, 0.0), 0);
    Trigger(4);
    EXPECT_EQ(Key(handle), 1);
}

}  // namespace
}  // namespace Korvex3Sync::tests
