// Independent libraries take the place of SyncInterface and QtTunnel.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "support/WaitUntil.h"
#include "survival/HostWorld.h"

namespace Korvex3Sync::tests::survival {

namespace {

using ::testing::ElementsAreArray;

TEST(ServiceModeCalls, APreloadedServiceReceivesExactlyTheCallsOfTheLibraryInOrder) {
    // The image set stays the only one, so three seconds later the client reconnects, once.
    HostWorld world({{"RestartProcessWaitTime", 30}});
    const std::filesystem::path log = world.Folders().Path() / "calls";
    const char* const sanitizer = std::getenv("ASAN_OPTIONS");
    // The run time library of the sanitizer comes second then, and both libraries have the
    // meta-object of SyncInterface; it has to be told to accept that.
    world.SetEnvironment("ASAN_OPTIONS",
                         std::string("verify_asan_link_order=0:detect_odr_violation=0") +
                             (sanitizer != nullptr ? std::string(":") + sanitizer : ""));
    world.SetEnvironment("LD_PRELOAD", KORVEX_SERVICE_RECORDER);
    world.SetEnvironment("KORVEX_RECORDER_FULL_LOG", log.string());
    const auto host = world.Host();
    for (const char* command : {"connect", "status 1", "sets 1", "settings 1", "trigger 4 1"}) {
        EXPECT_EQ(StatusOf(*host, command), STATUS_SUCCESS) << command;
    }
    const auto set = host->WaitFor("set", 0);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->word, "3");
    const auto status = host->WaitFor("status", 0);
    ASSERT_TRUE(status);
    EXPECT_EQ(status->word, "7,1");
    ASSERT_TRUE(host->WaitFor(0, [](const Event& event) {
        return event.kind == "debug" && event.word == "ReConnect ConnectInner ret=1";
    }));
    EXPECT_EQ(StatusOf(*host, "trigger 4 0"), STATUS_SUCCESS);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    world.End(*host);
    EXPECT_THAT(LinesOf(log), ElementsAreArray({
                                  "SyncInterface()",
                                  "getCamerasInformation(KV00)",  // of the switch to service mode
                                  "getCamerasInformation(KV00)",
                                  "connectDevice(KV00)",
                                  "setStatusCallBackFunction(77, 1)",
                                  "setScanCallBackFunction(77, 1)",
                                  "setVideoTriggerPeriod(77, 11)",
                                  "setDistanceIndicate(77, 1)",
                                  "setIRLaserDutioRatio(77, 43)",
                                  "setProjectDutioRatio(77, 42)",
                                  "setLaserLineDutioRatio(77, 41)",
                                  "setStrobeDutioRatio(77, 31, 32, 33)",
                                  "project(77, 1)",
                                  "setProjectorBrightness(77, 21)",
                                  "enableIRLaser(77, 1)",
                                  "enableBlueLaser(77, 1, 0)",
                                  "setStrobeControlledByTrigger(77, 1, 2)",
                                  "setCameraExposureAndGain(77, 1, 3.5, 3)",
                                  "setCameraExposureAndGain(77, 0, 2.5, 2)",
                                  "enableVideoTrigger(77, 4, 1)",
                                  "open(ZrSyncService_SharedMemory, 1024)",
                                  "segment(left, 0)",
                                  "lock(left)",
                                  "read(left, 1310720)",
                                  "unlock(left)",
                                  "destroy(left)",
                                  "segment(right, 0)",
                                  "lock(right)",
                                  "read(right, 1310720)",
                                  "unlock(right)",
                                  "destroy(right)",
                                  "segment(color, 0)",
                                  "lock(color)",
                                  "read(color, 1310720)",
                                  "unlock(color)",
                                  "destroy(color)",
                                  "getCamerasInformation(KV00)",  // of the reconnection
                                  "connectDevice(KV00)",
                                  "setCameraExposureAndGain(77, 0, 2.5, 2)",
                                  "setCameraExposureAndGain(77, 1, 3.5, 3)",
                                  "setStrobeControlledByTrigger(77, 1, 2)",
                                  "enableBlueLaser(77, 1, 0)",
                                  "enableIRLaser(77, 1)",
                                  "setVideoTriggerPeriod(77, 11)",
                                  "setProjectorBrightness(77, 21)",
                                  "project(77, 1)",
                                  "setStrobeDutioRatio(77, 31, 32, 33)",
                                  "setLaserLineDutioRatio(77, 41)",
                                  "setProjectDutioRatio(77, 42)",
                                  "setIRLaserDutioRatio(77, 43)",
                                  "setDistanceIndicate(77, 1)",
                                  "setStatusCallBackFunction(77, 1)",
                                  "setScanCallBackFunction(77, 1)",
                                  "enableVideoTrigger(77, 4, 1)",
                                  "enableVideoTrigger(77, 4, 0)",
                                  "disConnectDevice(77)",
                              }));
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
