#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "head/HeadSession.h"
#include "support/Environment.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::Ge;
using ::testing::Gt;
using ::testing::Le;
using ::testing::SizeIs;

constexpr int kPeriodMs = 20;
constexpr std::size_t kSets = 20;

/// One client for all cases: a process has one, and it never ends.
class HostProcess : public ::testing::Environment {
public:
    void SetUp() override {
        SetVariable("KORVEX_VIRTUAL_HEAD", "default");
        ASSERT_EQ(SwitchOnDeviceService(true), STATUS_SUCCESS);
    }
};

const auto* const kHostProcess = ::testing::AddGlobalTestEnvironment(new HostProcess);

/// A host that is connected in service mode.
class Host : public HeadSession {
protected:
    void SetUp() override {
        Request({});  // for what this process asks the board directly
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
    }
    ~Host() override { EnableVideoTrigger(m_handle, TRIGGER_LASER_LINES, false); }
};

TEST_F(Host, FindsTheCameras) {
    int count = 0;
    EXPECT_EQ(GetCameraCount("KV00", count), STATUS_SUCCESS);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(GetConnectCameraCount(m_handle, count), STATUS_SUCCESS);
    EXPECT_EQ(count, 1) << "two sensors behind one camera";
    char* serial = nullptr;
    ASSERT_EQ(GetCameraSerialNumber(m_handle, 0, serial), STATUS_SUCCESS);
    EXPECT_EQ(std::strncmp(serial, "KV00", 4), 0) << serial;
    delete[] serial;
    int width = 0;
    int height = 0;
    EXPECT_EQ(GetCameraResolution(m_handle, 0, width, height), STATUS_SUCCESS);
    EXPECT_EQ(width, 1280);
    EXPECT_EQ(height, 1024);
}

TEST_F(Host, SetsAndReadsBack) {
    const auto readBack = [this](auto set, auto get, int value) {
        int read = -1;
        EXPECT_EQ(set(m_handle, value), STATUS_SUCCESS);
        EXPECT_EQ(get(m_handle, read), STATUS_SUCCESS);
        EXPECT_EQ(read, value);
    };
    readBack(SetProjectorBrightness, GetProjectorBrightness, 42);
    readBack(SetVideoTriggerPeriod, GetVideoTriggerPeriod, 33);
    readBack(SetLaserLineDutioRatio, GetLaserLineDutioRatio, 61);
    readBack(SetProjectDutioRatio, GetProjectDutioRatio, 62);
    readBack(SetIRLaserDutioRatio, GetIRLaserDutioRatio, 63);
    int ratios[3] = {};
    EXPECT_EQ(SetStrobeDutioRatio(m_handle, 11, 12, 13), STATUS_SUCCESS);
    EXPECT_EQ(GetStrobeDutioRatio(m_handle, ratios[0], ratios[1], ratios[2]), STATUS_SUCCESS);
    EXPECT_THAT(ratios, ::testing::ElementsAre(11, 12, 13));
    double exposure = 0;
    int gain = 0;
    EXPECT_EQ(SetCameraExposureAndGain(m_handle, 1, 2.5, 3), STATUS_SUCCESS);
    EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
    EXPECT_DOUBLE_EQ(exposure, 2.5);
    EXPECT_EQ(gain, 3);
    bool on = true;
    EXPECT_EQ(EnableHeartbeat(m_handle, on), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeWorkTime(m_handle, 1, 2), STATUS_SYNCHRONISM_TYPE) << "direct mode only";
}

TEST_F(Host, KeepsTheUserMemory) {
    const std::string text = "a text with \xFF";
    ASSERT_EQ(WriteUserInfomation(m_handle, 3, text.c_str(), static_cast<int>(text.size())),
              STATUS_SUCCESS);
    char* read = nullptr;
    ASSERT_EQ(ReadUserInfomation(m_handle, 3, read), STATUS_SUCCESS);
    EXPECT_EQ(std::string(read), text);
    delete[] read;
}

TEST_F(Host, AsksForTheFirmwareWithAndWithoutItsHandle) {
    std::string direct;
    std::string forwarded;
    EXPECT_EQ(GetFirewareVersion("", direct), STATUS_SUCCESS);
    EXPECT_EQ(GetFirewareVersion(m_handle, "KV00", "", forwarded), STATUS_SUCCESS);
    EXPECT_FALSE(forwarded.empty());
    EXPECT_EQ(forwarded, direct) << "both heads are the default one";
    bool onU3 = false;
    EXPECT_EQ(IsConnectedOnU3("", onU3), STATUS_SUCCESS);
    EXPECT_TRUE(onU3);
}

TEST_F(Host, ScansWithEveryTriggerMode) {
    for (const CAMERA_TRIGGER_MODE mode :
         {TRIGGER_LASER_LINES, TRIGGER_PATTERN, TRIGGER_PATTERN_COLOR, TRIGGER_LASER_LINES_COLOR}) {
        SCOPED_TRACE(mode);
        const bool color = mode == TRIGGER_PATTERN_COLOR || mode == TRIGGER_LASER_LINES_COLOR;
        ASSERT_EQ(Connect(), STATUS_SUCCESS) << "nothing of the scan before is left";
        SetCollector collector;
        const EndedFirst ended(*this);
        ASSERT_EQ(SetScanCallBackFunction(m_handle, SetCollector::Receive, &collector),
                  STATUS_SUCCESS);
        ASSERT_EQ(Trigger(mode, kPeriodMs), STATUS_SUCCESS);
        ASSERT_TRUE(collector.WaitFor(kSets + 1)) << "so that those before have been counted";
        ScanStatistics counts;
        ASSERT_EQ(GetScanStatistics(m_handle, counts), STATUS_SUCCESS);
        ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
        ASSERT_EQ(SetScanCallBackFunction(m_handle, nullptr, nullptr), STATUS_SUCCESS);
        const std::vector<ImageSet> sets = collector.Sets();
        EXPECT_GE(counts.setsDelivered, kSets);
        // On a busy machine a frame may get lost, but not uncounted.
        std::uint64_t lost = 0;
        std::uint64_t withoutColor = 0;
        for (std::size_t i = 0; i < kSets; ++i) {
            EXPECT_EQ(sets[i].width, 1280);
            EXPECT_EQ(sets[i].height, 1024);
            ASSERT_THAT(sets[i].images, SizeIs(::testing::AllOf(Ge(2U), Le(color ? 3U : 2U))));
            EXPECT_THAT(sets[i].info, AllOf(SizeIs(sets[i].images.size()), Each(1)));
            withoutColor += color && sets[i].images.size() == 2 ? 1 : 0;
            if (i > 0) {
                lost += static_cast<unsigned char>(sets[i].Key() - sets[i - 1].Key() - 1);
            }
        }
        EXPECT_LE(lost, counts.missingKeys + counts.setsNotWritten + counts.setsOverwritten +
                            counts.noticesLost);
        EXPECT_LT(lost, 128U) << "a key has stepped back";
        EXPECT_LE(withoutColor, counts.monoWithoutColor);
    }
}

TEST_F(Host, GetsTheStatusUntilItStopsIt) {
    static std::atomic<int> answers;
    answers = 0;
    const auto count = [](const void* const&, const unsigned char& a, const unsigned char& b) {
        answers += a != 255 || b != 255 ? 1 : 0;
    };
    ASSERT_EQ(SetStatusCallBackFunction(m_handle, count, this), STATUS_SUCCESS);
    EXPECT_TRUE(support::WaitUntil([] { return answers >= 5; }));
    ASSERT_EQ(SetStatusCallBackFunction(m_handle, nullptr, nullptr), STATUS_SUCCESS);
    const int before = answers;
    int period = 0;
    EXPECT_EQ(GetVideoTriggerPeriod(m_handle, period), STATUS_SUCCESS);
    EXPECT_EQ(answers, before);
}

TEST_F(Host, TakesASnapshot) {
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    double exposure = 5;
    int gain = 0;
    ASSERT_EQ(SnapColorImage(m_handle, images, width, height, 0, exposure, gain, CONTROL_ROUTE_2),
              STATUS_SUCCESS);
    EXPECT_EQ(width, 1280);
    EXPECT_EQ(height, 1024);
    ASSERT_THAT(images, SizeIs(2));
    for (unsigned char* image : images) {
        ASSERT_NE(image, nullptr);
        EXPECT_THAT((std::vector<int>(image, image + 1280 * 1024)), Contains(Gt(0)));
        delete[] image;
    }
    std::vector<double> exposures{5, 5};
    std::vector<int> gains{0, 0};
    images.clear();
    EXPECT_EQ(
        SnapColorImageForIR(m_handle, images, width, height, 0, exposures, gains, CONTROL_ROUTE_2),
        STATUS_NOT_CONNECTED)
        << "a handle of service mode is none of direct mode";
}

TEST_F(Host, ReconnectsTheDeviceOnRequest) {
    ASSERT_EQ(SetVideoTriggerPeriod(m_handle, 17), STATUS_SUCCESS);
    ASSERT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
    ASSERT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    int period = 0;
    EXPECT_EQ(GetVideoTriggerPeriod(m_handle, period), STATUS_SUCCESS);
    EXPECT_EQ(period, 17);
}

TEST_F(Host, DisconnectsAndConnectsAgain) {
    void* const first = m_handle;
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(m_handle, nullptr);
    int period = 0;
    EXPECT_EQ(GetVideoTriggerPeriod(first, period), STATUS_NOT_CONNECTED);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    EXPECT_NE(m_handle, first);
    EXPECT_EQ(GetVideoTriggerPeriod(m_handle, period), STATUS_SUCCESS);
}

TEST_F(Host, UsesDirectModeBesideServiceMode) {
    void* const serviceHandle = m_handle;
    ASSERT_EQ(SwitchOnDeviceService(false), STATUS_SUCCESS);
    int period = 0;
    EXPECT_EQ(GetVideoTriggerPeriod(serviceHandle, period), STATUS_NOT_CONNECTED);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    EXPECT_EQ(SetVideoTriggerPeriod(m_handle, 44), STATUS_SUCCESS);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED) << "the client exists";
    m_handle = serviceHandle;
    EXPECT_EQ(SetVideoTriggerPeriod(m_handle, 55), STATUS_SUCCESS);
    EXPECT_EQ(GetVideoTriggerPeriod(m_handle, period), STATUS_SUCCESS);
    EXPECT_EQ(period, 55);
}

}  // namespace
}  // namespace Korvex3Sync::tests
