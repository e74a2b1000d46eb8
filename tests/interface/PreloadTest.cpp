#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

namespace {

std::vector<std::string> Lines(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

const std::vector<std::string> kExpected{
    "zr3DQueryFirmwareVersionFast(SN)",
    "EnumAllHCD()",
    "GetSpecifyDeviceTreePath(12903, 22354)",
    "EraseList()",
    "CreateCamera(KV00)",  // the count; never released
    "GetDeviceTotal(C1)",
    "CreateCamera(KV00)",
    "GetDeviceTotal(C2)",
    "CreateCamera(KV00)",
    "OpenCamera(C2, 0, 0, 0)",
    "GetSerialNo(C2)",
    "GetResolution(C2)",
    "GetColorMode(C2)",
    "GetGainRange(C2)",
    "OpenCamera(C3, 1, 0, 0)",
    "GetSerialNo(C3)",
    "GetResolution(C3)",
    "GetColorMode(C3)",
    "GetGainRange(C3)",
    "CloseCamera(C2)",
    "ReleaseCamera(C2)",
    "CloseCamera(C3)",
    "ReleaseCamera(C3)",
    "zr3DInitHidDev(null, 3267, 5752, SN)",
    "CreateCamera(KV00R1)",
    "GetDeviceTotal(C4)",
    "OpenCamera(C4, KV00R1, 8, 4)",
    "GetColorMode(C4)",
    "StartCamera(C4, 0)",
    "zr3DQueryCurrentStatus(B1)",
    "zr3DQueryProjectorFirewareVersion(B1)",
    "zr3DOpenOrCloseStrobeFlicker(B1, 2, 1)",
    "zr3DSetLaserEnable(B1, 1, 1)",
    "zr3DSetIRLaserEnable(B1, 1)",
    "zr3DSetIRLaserLevel(B1, 4)",
    "zr3DProject(B1, 1)",
    "zr3DSetProjectorBrightness(B1, 70)",
    "zr3DQueryProjectorBrightness(B1)",
    "zr3DSetLedDutioRatio(B1, 41, 100, 30, 100)",
    "zr3DQueryLedDutioRatio(B1, 48)",
    "zr3DSetDutioRatio(B1, 49, 41)",
    "zr3DQueryDutioRatio(B1, 50)",
    "zr3DSetDutioRatio(B1, 51, 42)",
    "zr3DQueryDutioRatio(B1, 52)",
    "zr3DSetDutioRatio(B1, 53, 43)",
    "zr3DQueryDutioRatio(B1, 54)",
    "zr3DSetLedWorkTime(B1, 1, 501)",
    "zr3DSetLedWorkTime(B1, 0, 502)",
    "zr3DQueryLedWorkTime(B1, 1)",
    "zr3DQueryLedWorkTime(B1, 0)",
    "zr3DSetWorkTime(B1, 82, 503)",
    "zr3DQueryWorkTime(B1, 83)",
    "zr3DSetWorkTime(B1, 84, 504)",
    "zr3DQueryWorkTime(B1, 85)",
    "zr3DSetWorkTime(B1, 86, 505)",
    "zr3DQueryWorkTime(B1, 87)",
    "zr3DSetDistanceIndicateState(B1, 3)",
    "zr3DWriteUserInfomation(B1, 3, abc, 3)",
    "zr3DReadUserInfomation(B1, 3)",
    "zr3DEnableHeartbeat(B1, 1)",
    "zr3DSetVideoTriggerPeriod(B1, 8)",
    "zr3DQueryTriggerPeriod(B1)",
    "zr3DSetVideoTrigleMode(B1, 6)",
    "zr3DSetVideoTrigleMode(B1, 5)",
    "zr3DResetFPGA(B1)",
    "GetSerialNo(C4)",
    "GetResolution(C4)",
    "SetCameraIntParam(C4, 5, 3413)",
    "SetCameraIntParam(C4, 5, 256)",
    "GetExposureTime(C4)",
    "SetCameraIntParam(C4, 5, 256)",
    "GetGain(C4)",
    "ReleaseCamera(C4)",
    "CreateCamera(KV00R1)",  // the reconnection
    "zr3DExitHidDev(B1)",
    "zr3DInitHidDev(null, 3267, 5752, SN)",
    "zr3DQueryCurrentStatus(B2)",
    "CloseCamera(C5)",
    "OpenCamera(C5, KV00R1, 8, 4)",
    "GetDeviceType(C5)",
    "StartCamera(C5, 0)",
    "SetCameraIntParam(C5, 5, 3413)",
    "zr3DOpenOrCloseStrobeFlicker(B2, 2, 1)",
    "zr3DSetDistanceIndicateState(B2, 3)",
    "zr3DProject(B2, 1)",
    "zr3DSetProjectorBrightness(B2, 70)",
    "zr3DSetWorkTime(B2, 84, 504)",
    "zr3DSetIRLaserLevel(B2, 4)",
    "zr3DSetLaserEnable(B2, 1, 1)",
    "zr3DSetDutioRatio(B2, 49, 41)",
    "zr3DSetWorkTime(B2, 82, 1000)",
    "zr3DSetIRLaserEnable(B2, 1)",
    "zr3DSetWorkTime(B2, 86, 505)",
    "zr3DSetDutioRatio(B2, 53, 43)",
    "zr3DSetVideoTrigleMode(B2, 5)",
    "zr3DSetVideoTriggerPeriod(B2, 8)",
    "zr3DSetDutioRatio(B2, 51, 42)",
    "zr3DSetLedDutioRatio(B2, 41, 100, 30, 100)",
    "zr3DSetLedWorkTime(B2, 1, 501)",
    "zr3DSetLedWorkTime(B2, 0, 502)",
    "zr3DEnableHeartbeat(B2, 1)",
    "UnlockOthers(C5)",
    "CloseCamera(C5)",
    "ReleaseCamera(C5)",
    "zr3DEnableHeartbeat(B2, 0)",
    "zr3DProject(B2, 0)",
    "zr3DExitHidDev(B2)",
};

/// A temporary folder whose path contains no space or colon, which would end a path in LD_PRELOAD.
/// The destructor removes it.
class PlainFolder {
public:
    PlainFolder() { EXPECT_NE(::mkdtemp(m_path.data()), nullptr); }
    ~PlainFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    PlainFolder(const PlainFolder&) = delete;
    PlainFolder& operator=(const PlainFolder&) = delete;

    std::filesystem::path Path() const { return m_path; }

private:
    std::string m_path = "/tmp/korvex-recorder-XXXXXX";
};

TEST(PreloadedRecorder, ReceivesExactlyTheCallsOfTheLibraryInOrder) {
    const PlainFolder folder;
    const auto recorder = folder.Path() / "recorder.so";
    const auto log = folder.Path() / "log";
    std::filesystem::create_symlink(RECORDER_PRELOAD, recorder);
    // The sanitizers' run time libraries come second then, which they have to be told to accept.
    const char* const sanitizer = std::getenv("ASAN_OPTIONS");
    ChildOptions options;
    options.environment = {
        {"ASAN_OPTIONS", std::string("verify_asan_link_order=0") +
                             (sanitizer != nullptr ? std::string(":") + sanitizer : "")},
        {"LD_PRELOAD", recorder.string()},
        {"KORVEX_RECORDER_LOG", log.string()}};
    const ChildResult result = RunChild({RECORDED_SCAN}, options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(Lines(log), kExpected);
}

}  // namespace

}  // namespace Korvex3Sync::tests
