#include <gmock/gmock.h>

#include "cameras/AllCalls.h"
#include "cameras/HeadFixture.h"

namespace Korvex3Sync::tests {
namespace {

using namespace zr3DCamera;
using testing::ElementsAre;

class VirtualCameraTest : public HeadFixture {};

TEST_F(VirtualCameraTest, AnotherTypeOfTheMakerHasNoCameras) {
    for (const char* type : {"KV99", "KV00A", "KV00A10012"}) {
        void* handle = Create(type);
        int total = -1;
        ASSERT_EQ(GetDeviceTotal(handle, total), 0);
        EXPECT_EQ(total, 0) << type;
        ReleaseCamera(handle);
    }
}

TEST_F(VirtualCameraTest, DiscoveryFindsTwoSensorsBehindOneSerial) {
    for (const char* type : {"KV", "KV0", "KV00", "KV00A1001"}) {
        void* first = Create(type);
        int total = 0;
        ASSERT_EQ(GetDeviceTotal(first, total), 0);
        EXPECT_EQ(total, 2);
        void* second = Create(type);
        ASSERT_EQ(OpenCamera(first, 0, 0, 0), 0);
        ASSERT_EQ(OpenCamera(second, 1, 0, 0), 0);
        for (void* handle : {first, second}) {
            std::string serial;
            int width = 0;
            int height = 0;
            EXPECT_EQ(GetSerialNo(handle, serial), 0);
            EXPECT_EQ(GetResolution(handle, width, height), 0);
            EXPECT_EQ(serial, "KV00A1001");
            EXPECT_EQ(width, kWidth);
            EXPECT_EQ(height, kHeight);
        }
        ReleaseCamera(first);
        ReleaseCamera(second);
    }
}

TEST_F(VirtualCameraTest, OnlyItsIndicesItsSerialAndItsSizeOpen) {
    void* handle = Create();
    for (const int index : {-1, 2, 1000}) {
        EXPECT_NE(OpenCamera(handle, index, 0, 0), 0) << index;
    }
    const std::string endless(10000, 'K');
    for (const char* serial : {"", "KV00", "KV00A1002", "kv00a1001", endless.c_str()}) {
        EXPECT_NE(OpenCamera(handle, serial, 0, 0), 0) << serial;
    }
    const int sizes[][2] = {{kWidth, 0}, {0, kHeight}, {kHeight, kWidth}, {-1, -1}, {32, 16}};
    for (const auto& [width, height] : sizes) {
        EXPECT_NE(OpenCamera(handle, 0, width, height), 0) << width << " x " << height;
    }
    EXPECT_EQ(OpenCamera(handle, 0, kWidth, kHeight), 0);
    EXPECT_NE(OpenCamera(handle, 0, kWidth, kHeight), 0) << "it is open already";
    EXPECT_EQ(CloseCamera(handle), 0);
    EXPECT_EQ(OpenCamera(handle, "KV00A1001", 0, 0), 0);
    ReleaseCamera(handle);
}

TEST_F(VirtualCameraTest, CameraThatIsNotOpenFailsButForWhatNeedsNone) {
    void* handle = Create();
    for (const auto& call : CallsOnAHandle()) {
        const std::string name = call.name;
        if (name == "OpenCamera") {
            continue;
        }
        const bool works = name == "GetDeviceTotal" || name == "CloseCamera" ||
                           name == "GetDeviceType" || name == "UnlockOthers";
        EXPECT_EQ(call.succeeds(handle), works) << name;
    }
    ReleaseCamera(handle);
}

TEST_F(VirtualCameraTest, ColorModeAndGainRangeAreThoseOfTheHead) {
    virtual_head::HeadDescription description = Small();
    description.gainLow = 1;
    description.gainHigh = 9;
    for (const bool color : {true, false}) {
        description.color = color;
        m_head = Request(description);
        void* handle = CreateOpen();
        ZR_IMG_FORMAT mode{};
        int low = 0;
        int high = 0;
        EXPECT_EQ(GetColorMode(handle, mode), 0);
        EXPECT_EQ(mode, color ? 16 : 1);
        EXPECT_EQ(GetGainRange(handle, low, high), 0);
        EXPECT_EQ(low, 1);
        EXPECT_EQ(high, 9);
        ReleaseCamera(handle);
    }
}

TEST_F(VirtualCameraTest, FailedQueriesLeaveTheirOutputsAlone) {
    void* handle = Create();
    std::string serial = "before";
    int width = -7;
    int height = -8;
    ZR_IMG_FORMAT mode{99};
    long time = -9;
    GetSerialNo(handle, serial);
    GetResolution(handle, width, height);
    GetColorMode(handle, mode);
    GetExposureTime(handle, time);
    EXPECT_EQ(serial, "before");
    EXPECT_EQ(width, -7);
    EXPECT_EQ(height, -8);
    EXPECT_EQ(mode, 99);
    EXPECT_EQ(time, -9);
    ReleaseCamera(handle);
}

TEST_F(VirtualCameraTest, ParameterWordsSetAndSelectForEveryInstanceOfTheHead) {
    void* one = CreateOpen();
    void* other = CreateOpen();
    long time = 0;
    int gain = 0;
    EXPECT_TRUE(SetCameraIntParam(one, CAMPARAM{5}, 0x0D55));  // order 1, gain 3, 8.5 ms
    EXPECT_EQ(GetExposureTime(other, time), 0);
    EXPECT_EQ(GetGain(other, gain), 0);
    EXPECT_EQ(time, 8500);
    EXPECT_EQ(gain, 3);
    EXPECT_TRUE(SetCameraIntParam(other, CAMPARAM{5}, 2));
    EXPECT_EQ(SetExposureTime(one, 12345), 0);
    EXPECT_EQ(SetGain(one, 16), 0);
    EXPECT_TRUE(SetCameraIntParam(one, CAMPARAM{5}, 0x0100));
    EXPECT_EQ(GetExposureTime(one, time), 0);
    EXPECT_EQ(time, 8500);
    EXPECT_TRUE(SetCameraIntParam(one, CAMPARAM{5}, 0x0200));
    EXPECT_EQ(GetExposureTime(one, time), 0);
    EXPECT_EQ(GetGain(one, gain), 0);
    EXPECT_EQ(time, 12345);
    EXPECT_EQ(gain, 16);
    ReleaseCamera(one);
    ReleaseCamera(other);
}

TEST_F(VirtualCameraTest, ValuesOutOfRangeAndOtherParametersFail) {
    void* handle = CreateOpen();
    EXPECT_NE(SetExposureTime(handle, 0), 0);
    EXPECT_NE(SetExposureTime(handle, -5), 0);
    EXPECT_NE(SetGain(handle, 17), 0);
    EXPECT_FALSE(SetCameraIntParam(handle, CAMPARAM{5}, -1));
    EXPECT_FALSE(SetCameraIntParam(handle, CAMPARAM{4}, 1));
    EXPECT_FALSE(SetCameraIntParam(handle, CAMPARAM{-1}, 1));
    ReleaseCamera(handle);
}

TEST_F(VirtualCameraTest, PresentCameraHasATypeAboveZero) {
    void* handle = Create();
    int type = 0;
    EXPECT_TRUE(GetDeviceType(handle, type));
    EXPECT_GT(type, 0);
    ReleaseCamera(handle);
}

TEST_F(VirtualCameraTest, EveryCallGoesIntoTheJournalOnce) {
    void* handle = Create();
    for (const auto& call : CallsOnAHandle()) {
        EXPECT_TRUE(call.succeeds(handle)) << call.name;
    }
    unsigned char* image = nullptr;
    SnapShot(handle, image);
    ReleaseCamera(handle);
    EXPECT_THAT(
        m_head->GetJournal().Texts(),
        ElementsAre("CreateCamera(KV00) = 0", "GetDeviceTotal() = 0", "OpenCamera(0, 0, 0) = 0",
                    "CloseCamera() = 0", "OpenCamera(KV00A1001, 0, 0) = 0", "StartCamera(0) = 0",
                    "GetSerialNo() = 0", "GetResolution() = 0", "GetColorMode() = 0",
                    "GetGainRange() = 0", "SetExposureTime(1000) = 0", "GetExposureTime() = 0",
                    "SetGain(1) = 0", "GetGain() = 0", "SetCameraIntParam(5, 1) = true",
                    "GetDeviceType() = true", "ResetCameraState() = true", "UnlockOthers() = true",
                    "SnapShot() = -1", "ReleaseCamera() = 0"));
}

TEST_F(VirtualCameraTest, EveryCallMeetsItsFault) {
    virtual_head::Faults& faults = m_head->GetFaults();
    void* handle = nullptr;
    ASSERT_TRUE(faults.Fail("CreateCamera", 1));
    EXPECT_NE(CreateCamera(handle, "KV00"), 0);
    handle = Create();
    for (const auto& call : CallsOnAHandle()) {
        ASSERT_TRUE(faults.Fail(call.name, 1));
        EXPECT_FALSE(call.succeeds(handle)) << call.name;
        EXPECT_TRUE(call.succeeds(handle)) << call.name;
    }
    Trigger(4);
    unsigned char* image = nullptr;
    ASSERT_TRUE(faults.Fail("SnapShot", 1));
    EXPECT_NE(SnapShot(handle, image), 0);
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(SnapShot(handle, image), 0) << "the frame waited";
    ASSERT_TRUE(faults.Fail("ReleaseCamera", 1));
    EXPECT_NE(ReleaseCamera(handle), 0);
    EXPECT_NE(handle, nullptr);
    EXPECT_EQ(ReleaseCamera(handle), 0);
    EXPECT_EQ(m_head->GetJournal().Texts({"CreateCamera", "ReleaseCamera"}),
              (std::vector<std::string>{"CreateCamera(KV00) = -1", "CreateCamera(KV00) = 0",
                                        "ReleaseCamera() = -1", "ReleaseCamera() = 0"}));
}

}  // namespace
}  // namespace Korvex3Sync::tests
