#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "service/ServiceClient.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Calls = std::vector<std::string>;
using Client = zr3DHandiSyncQT;

int g_number;
int g_second;
int g_third;
double g_exposure;
char* g_text;
std::vector<unsigned char*> g_images;

void SetNothing(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
                std::vector<int>&) {}
void StatusNothing(const void* const&, const unsigned char&, const unsigned char&) {}

/// An operation of a connected client, and the one call of the service that it makes.
struct Forwarded {
    const char* name;
    const char* call;
    std::function<RETSTATUS(Client& client, void* handle)> run;
};

// Any handle reaches the connected device.
void* const kAnyHandle = reinterpret_cast<void*>(0x1234);

const std::vector<Forwarded> kForwarded{
    {"SetVideoTriggerPeriod", "setVideoTriggerPeriod(77, 21)",
     [](Client& c, void* h) { return c.SetVideoTriggerPeriod(h, 21); }},
    {"GetVideoTriggerPeriod", "getVideoTriggerPeriod(77)",
     [](Client& c, void* h) { return c.GetVideoTriggerPeriod(h, g_number); }},
    {"SetProjectorBrightness", "setProjectorBrightness(77, 22)",
     [](Client& c, void* h) { return c.SetProjectorBrightness(h, 22); }},
    {"GetProjectorBrightness", "getProjectorBrightness(77)",
     [](Client& c, void* h) { return c.GetProjectorBrightness(h, g_number); }},
    {"EnableVideoTrigger", "enableVideoTrigger(77, 3, 1)",
     [](Client& c, void* h) { return c.EnableVideoTrigger(h, TRIGGER_PATTERN_COLOR, true); }},
    {"Project", "project(77, 2)",
     [](Client& c, void* h) { return c.Project(h, PROJECT_PATTERN_2); }},
    {"SetDistanceIndicate", "setDistanceIndicate(77, 3)",
     [](Client& c, void* h) { return c.SetDistanceIndicate(h, DISTANCE_STATUS_3); }},
    {"GetConnectCameraCount", "getConnectCameraCount(77)",
     [](Client& c, void* h) { return c.GetConnectCameraCount(h, g_number); }},
    {"GetCameraSerialNumber", "getCameraSerialNumber(77, 1)",
     [](Client& c, void* h) { return c.GetCameraSerialNumber(h, 1, g_text); }},
    {"GetCameraResolution", "getCameraResolution(77, 1)",
     [](Client& c, void* h) { return c.GetCameraResolution(h, 1, g_number, g_second); }},
    {"SetStatusCallBackFunction", "setStatusCallBackFunction(77, 1)",
     [](Client& c, void* h) { return c.SetStatusCallBackFunction(h, StatusNothing, &g_number); }},
    {"SetScanCallBackFunction", "setScanCallBackFunction(77, 1)",
     [](Client& c, void* h) { return c.SetScanCallBackFunction(h, SetNothing, &g_number); }},
    {"ReconnectDevice", "reconnectDevice(77)",
     [](Client& c, void* h) { return c.ReconnectDevice(h); }},
    {"SetStrobeControlledByTrigger", "setStrobeControlledByTrigger(77, 1, 4)",
     [](Client& c, void* h) {
         return c.SetStrobeControlledByTrigger(h, CONTROL_ROUTE_1, STROBE_STATE_4);
     }},
    {"EnableBlueLaser", "enableBlueLaser(77, 3, 1)",
     [](Client& c, void* h) { return c.EnableBlueLaser(h, LASER_WORK_MODE_3, true); }},
    {"EnableIRLaser", "enableIRLaser(77, 1)",
     [](Client& c, void* h) { return c.EnableIRLaser(h, true); }},
    {"CloseDeviceCamera", "closeDeviceCamera(77)",
     [](Client& c, void* h) { return c.CloseDeviceCamera(h); }},
    {"SetStrobeDutioRatio", "setStrobeDutioRatio(77, 31, 32, 33)",
     [](Client& c, void* h) { return c.SetStrobeDutioRatio(h, 31, 32, 33); }},
    {"GetStrobeDutioRatio", "getStrobeDutioRatio(77)",
     [](Client& c, void* h) { return c.GetStrobeDutioRatio(h, g_number, g_second, g_third); }},
    {"SetLaserLineDutioRatio", "setLaserLineDutioRatio(77, 34)",
     [](Client& c, void* h) { return c.SetLaserLineDutioRatio(h, 34); }},
    {"GetLaserLineDutioRatio", "getLaserLineDutioRatio(77)",
     [](Client& c, void* h) { return c.GetLaserLineDutioRatio(h, g_number); }},
    {"SetProjectDutioRatio", "setProjectDutioRatio(77, 35)",
     [](Client& c, void* h) { return c.SetProjectDutioRatio(h, 35); }},
    {"GetProjectDutioRatio", "getProjectDutioRatio(77)",
     [](Client& c, void* h) { return c.GetProjectDutioRatio(h, g_number); }},
    {"SetIRLaserDutioRatio", "setIRLaserDutioRatio(77, 36)",
     [](Client& c, void* h) { return c.SetIRLaserDutioRatio(h, 36); }},
    {"GetIRLaserDutioRatio", "getIRLaserDutioRatio(77)",
     [](Client& c, void* h) { return c.GetIRLaserDutioRatio(h, g_number); }},
    {"WriteUserInfomation", "writeUserInfomation(77, 5, note\xFF)",
     [](Client& c, void* h) { return c.WriteUserInfomation(h, 5, "note\xFF\0rest", 10); }},
    {"ReadUserInfomation", "readUserInfomation(77, 5)",
     [](Client& c, void* h) { return c.ReadUserInfomation(h, 5, g_text); }},
    {"SnapColorImage", "snapColorImage(77, 1, 2.5, 4, 2)",
     [](Client& c, void* h) {
         double exposure = 2.5;
         int gain = 4;
         return c.SnapColorImage(h, g_images, g_number, g_second, 1, exposure, gain,
                                 CONTROL_ROUTE_2);
     }},
    {"SetCameraExposureAndGain", "setCameraExposureAndGain(77, 1, 8.5, 3)",
     [](Client& c, void* h) { return c.SetCameraExposureAndGain(h, 1, 8.5, 3); }},
    {"GetCameraExposureAndGain", "getCameraExposureAndGain(77, 1)",
     [](Client& c, void* h) { return c.GetCameraExposureAndGain(h, 1, g_exposure, g_number); }},
};

class ForwardedOperations : public ServiceClient {
protected:
    ForwardedOperations() {
        g_number = g_second = g_third = -1;
        g_exposure = -1;
        FreeOutputs();
        int value = 41;
        for (const char* const name : {"width", "height", "period", "brightness", "texture",
                                       "ratio", "ratioWithTexture", "exposure", "gain"}) {
            Recorder::Get().SetValue(name, value++);
        }
    }
    ~ForwardedOperations() override { FreeOutputs(); }

    static void FreeOutputs() {
        delete[] g_text;
        g_text = nullptr;
        for (unsigned char* const image : g_images) {
            delete[] image;
        }
        g_images.clear();
    }
};

TEST_F(ForwardedOperations, MakeOneCallAndLogTheirTexts) {
    Connect();
    for (const Forwarded& operation : kForwarded) {
        SCOPED_TRACE(operation.name);
        const std::size_t before = Recorder::Get().Calls().size();
        Output output;
        EXPECT_EQ(operation.run(*m_client, kAnyHandle), STATUS_SUCCESS);
        EXPECT_TRUE(MatchesGolden("Forwarded", operation.name, output.End()));
        const Calls calls = Recorder::Get().Calls();
        EXPECT_THAT(Calls(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()),
                    ElementsAre(operation.call));
        FreeOutputs();
    }
}

TEST_F(ForwardedOperations, ReturnTheStatusOfTheServiceAndLeaveOutputsAlone) {
    Connect();
    for (const Forwarded& operation : kForwarded) {
        SCOPED_TRACE(operation.name);
        const std::string call = operation.call;
        Recorder::Get().SetValue(call.substr(0, call.find('(')), STATUS_CAMERA);
        g_number = g_second = g_third = -1;
        g_exposure = -1;
        Output output;
        EXPECT_EQ(operation.run(*m_client, kAnyHandle), STATUS_CAMERA);
        EXPECT_TRUE(MatchesGolden("ForwardedRefused", operation.name, output.End()));
        EXPECT_EQ(g_number, -1);
        EXPECT_EQ(g_second, -1);
        EXPECT_EQ(g_third, -1);
        EXPECT_EQ(g_exposure, -1);
        EXPECT_EQ(g_text, nullptr);
        EXPECT_THAT(g_images, IsEmpty());
    }
}

TEST_F(ForwardedOperations, AreNotConnectedWithoutADevice) {
    const auto allRefused = [this] {
        const std::size_t before = Recorder::Get().CallsInOrder().size();
        Output output;
        for (const Forwarded& operation : kForwarded) {
            EXPECT_EQ(operation.run(*m_client, kAnyHandle), STATUS_NOT_CONNECTED) << operation.name;
        }
        EXPECT_THAT(output.End(), IsEmpty());
        EXPECT_EQ(Recorder::Get().CallsInOrder().size(), before);
    };
    MakeClient();
    allRefused();  // no service link
    ASSERT_TRUE(m_client->Init());
    allRefused();  // no device
    ASSERT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_SUCCESS);
    ASSERT_EQ(m_client->DisConnectDevice(m_handle), STATUS_SUCCESS);
    allRefused();
}

TEST_F(ForwardedOperations, GettersGiveTheValuesOfTheService) {
    Connect();
    Client& c = *m_client;
    EXPECT_EQ(c.GetVideoTriggerPeriod(m_handle, g_number), STATUS_SUCCESS);
    EXPECT_EQ(g_number, 43);
    EXPECT_EQ(c.GetProjectorBrightness(m_handle, g_number), STATUS_SUCCESS);
    EXPECT_EQ(g_number, 44);
    EXPECT_EQ(c.GetConnectCameraCount(m_handle, g_number), STATUS_SUCCESS);
    EXPECT_EQ(g_number, 2);
    EXPECT_EQ(c.GetCameraResolution(m_handle, 0, g_number, g_second), STATUS_SUCCESS);
    EXPECT_EQ(g_number, 41);
    EXPECT_EQ(g_second, 42);
    EXPECT_EQ(c.GetStrobeDutioRatio(m_handle, g_number, g_second, g_third), STATUS_SUCCESS);
    EXPECT_EQ(g_number, 45);
    EXPECT_EQ(g_second, 46);
    EXPECT_EQ(g_third, 47);
    for (const auto get : {&Client::GetLaserLineDutioRatio, &Client::GetProjectDutioRatio,
                           &Client::GetIRLaserDutioRatio}) {
        g_number = -1;
        EXPECT_EQ((c.*get)(m_handle, g_number), STATUS_SUCCESS);
        EXPECT_EQ(g_number, 46);
    }
    EXPECT_EQ(c.GetCameraExposureAndGain(m_handle, 0, g_exposure, g_number), STATUS_SUCCESS);
    EXPECT_EQ(g_exposure, 48.5);
    EXPECT_EQ(g_number, 49);
    EXPECT_EQ(c.GetCameraSerialNumber(m_handle, 0, g_text), STATUS_SUCCESS);
    EXPECT_STREQ(g_text, "KV00R1");
}

TEST_F(ForwardedOperations, AReconnectWritesWhatWasRequestedEvenIfTheServiceRefusedIt) {
    Connect();
    for (const Forwarded& operation : kForwarded) {
        Recorder::Get().FailNth(
            std::string(operation.call).substr(0, std::string(operation.call).find('(')), 1);
        EXPECT_EQ(operation.run(*m_client, kAnyHandle), STATUS_FAILED) << operation.name;
    }
    EXPECT_THAT(ReconnectCalls(),
                ElementsAre("getCamerasInformation(KV00)", "connectDevice(KV00)",
                            "setCameraExposureAndGain(77, 1, 8.5, 3)",
                            "setStrobeControlledByTrigger(77, 1, 4)", "enableBlueLaser(77, 3, 1)",
                            "enableIRLaser(77, 1)", "setVideoTriggerPeriod(77, 21)",
                            "setProjectorBrightness(77, 22)", "project(77, 2)",
                            "setStrobeDutioRatio(77, 31, 32, 33)", "setLaserLineDutioRatio(77, 34)",
                            "setProjectDutioRatio(77, 35)", "setIRLaserDutioRatio(77, 36)",
                            "setDistanceIndicate(77, 3)", "enableVideoTrigger(77, 3, 1)"));
}

TEST_F(ForwardedOperations, ASetterWithoutADeviceIsNotRemembered) {
    ASSERT_TRUE(Start());
    for (const Forwarded& operation : kForwarded) {
        ASSERT_EQ(operation.run(*m_client, kAnyHandle), STATUS_NOT_CONNECTED);
    }
    EXPECT_THAT(
        ReconnectCalls(),
        ElementsAre("getCamerasInformation(KV00)", "connectDevice(KV00)",
                    "setStrobeControlledByTrigger(77, 2, 1)", "enableBlueLaser(77, 0, 0)",
                    "enableIRLaser(77, 0)", "setVideoTriggerPeriod(77, 10)",
                    "setProjectorBrightness(77, 10)", "project(77, 0)",
                    "setStrobeDutioRatio(77, 100, 100, 100)", "setLaserLineDutioRatio(77, 100)",
                    "setProjectDutioRatio(77, 0)", "setIRLaserDutioRatio(77, 100)",
                    "setDistanceIndicate(77, 0)", "enableVideoTrigger(77, 1, 0)"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
