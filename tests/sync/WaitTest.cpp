#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/TimeScale.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// A call of the board or camera library, and when it came.
struct TimedCall {
    std::string name;
    Clock::time_point time;
};

/// What the library leaves the hardware time for. Between a call of `from` and the next call of
/// `to` (the end of the operation when empty), with no call of `notOver` in between, it waits at
/// least that long.
struct Wait {
    const char* name;
    milliseconds nominal;
    const char* from;
    const char* to;
    const char* notOver;
    const char* fails;  // a call that the library refuses
    std::function<void(IManagerSync&)> run;
};

double g_exposure = 0.0;
int g_gain = 0;

void Snap(IManagerSync& manager, bool forInfrared) {
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    const RETSTATUS result =
        forInfrared
            ? manager.Snapshots().SnapColorImageForIR(images, width, height, 0, {1.0, 2.0}, {1, 2},
                                                      CONTROL_ROUTE_0)
            : manager.Snapshots().SnapColorImage(images, width, height, 0, 1.0, 1, CONTROL_ROUTE_0);
    EXPECT_EQ(result, STATUS_SUCCESS);
    for (unsigned char* image : images) {
        delete[] image;
    }
}

void PollTwice(IManagerSync& manager) {
    manager.Status().SetStatusCallBackFunction(
        [](const void* const&, const unsigned char&, const unsigned char&) {}, &manager);
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    // The third has begun: the second was noted.
    EXPECT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", polls + 3));
}

const Wait kWaits[] = {
    {"TheRetryOfTheCombinedSetter", milliseconds(20), "SetCameraIntParam", "SetCameraIntParam", "",
     "SetCameraIntParam", [](IManagerSync& m) { m.Cameras().SetCameraExposureAndGain(0, 1.0, 1); }},
    {"TheExposureOfTheCombinedQuery", milliseconds(20), "SetCameraIntParam", "GetExposureTime", "",
     "", [](IManagerSync& m) { m.Cameras().GetCameraExposureAndGain(0, g_exposure, g_gain); }},
    {"TheGainOfTheCombinedQuery", milliseconds(20), "SetCameraIntParam", "GetGain", "", "",
     [](IManagerSync& m) { m.Cameras().GetCameraExposureAndGain(0, g_exposure, g_gain); }},
    {"TheExposureSetter", milliseconds(20), "SetCameraIntParam", "SetExposureTime", "", "",
     [](IManagerSync& m) { m.Cameras().SetExposureTime(0, 1.0); }},
    {"TheGainSetter", milliseconds(20), "SetCameraIntParam", "SetGain", "", "",
     [](IManagerSync& m) { m.Cameras().SetCameraGain(0, 1); }},
    {"TheGainQuery", milliseconds(20), "SetCameraIntParam", "GetGain", "", "",
     [](IManagerSync& m) { m.Cameras().GetCameraGain(0, g_gain); }},
    {"FramesThatAreOnTheirWayToASnapshot", milliseconds(80), "zr3DSetVideoTrigleMode",
     "zr3DOpenOrCloseStrobeFlicker", "", "", [](IManagerSync& m) { Snap(m, false); }},
    {"TheSecondImageOfASnapshot", milliseconds(10), "ResetCameraState", "zr3DSetVideoTrigleMode",
     "", "", [](IManagerSync& m) { Snap(m, false); }},
    {"TheThirdImageOfASnapshot", milliseconds(10), "SetCameraIntParam", "zr3DSetVideoTrigleMode",
     "ResetCameraState", "", [](IManagerSync& m) { Snap(m, true); }},
    {"TheHeartbeatAfterAReconnection", milliseconds(100), "zr3DEnableHeartbeat", "", "", "",
     [](IManagerSync& m) { EXPECT_EQ(m.ReConnectDeviceEx(), 0); }},
    {"TheNextStatusPoll", milliseconds(200), "zr3DQueryCurrentStatus", "zr3DQueryCurrentStatus", "",
     "", &PollTwice},
};

/// Time runs slower, so that no call takes as long as a wait by itself.
class TheLibrary : public testing::TestWithParam<Wait> {
protected:
    TheLibrary() { Recorder::Get().Reset(); }
    void Note(const std::string& call) {
        Recorder::Get().OnCall(call, [this, call] {
            {
                std::lock_guard lock(m_mutex);
                m_calls.push_back({call, Clock::now()});
            }
            if (call == "zr3DSetVideoTrigleMode" &&
                Recorder::Get().Calls().back().ends_with(", 4)")) {
                Recorder::Get().PushSnap({0, false, support::ColorFrame(std::size_t{32}, 1, 9)});
            }
        });
    }
    std::vector<TimedCall> Calls() const {
        std::lock_guard lock(m_mutex);
        return m_calls;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<TimedCall> m_calls;

protected:
    os::ScopedTimeScale m_scale{5};
    IManagerSync m_manager;
};

TEST_P(TheLibrary, LeavesTimeFor) {
    const Wait& wait = GetParam();
    ASSERT_EQ(ConnectRecorded(m_manager), STATUS_SUCCESS);
    for (const char* call : {"zr3DSetVideoTrigleMode", wait.from, wait.to, wait.notOver}) {
        Note(call);
    }
    if (*wait.fails != '\0') {
        Recorder::Get().FailAlways(wait.fails);
    }
    wait.run(m_manager);
    std::vector<TimedCall> calls = Calls();
    calls.push_back({"", Clock::now()});
    for (std::size_t i = 1; i < calls.size(); ++i) {
        if (calls[i - 1].name == wait.from && calls[i].name == wait.to) {
            EXPECT_GE(calls[i].time - calls[i - 1].time, os::Scaled(wait.nominal));
            return;
        }
    }
    FAIL() << "no " << wait.to << " came after a " << wait.from;
}

INSTANTIATE_TEST_SUITE_P(Each, TheLibrary, testing::ValuesIn(kWaits),
                         [](const auto& wait) { return std::string(wait.param.name); });

TEST(ParkedStatusThread, WaitsInsteadOfSpinning) {
    Recorder::Get().Reset();
    const os::ScopedTimeScale scale(0.1);
    IManagerSync manager;
    ASSERT_EQ(ConnectRecorded(manager), STATUS_SUCCESS);
    PollTwice(manager);
    constexpr milliseconds kParked{500};
    std::chrono::duration<double> worked{};
    Recorder::Get().OnCall("zr3DInitHidDev", [&] {
        // The thread is parked before the board is opened, and no frame is fetched meanwhile.
        const std::clock_t begin = std::clock();
        std::this_thread::sleep_for(kParked);
        worked = std::chrono::duration<double>(static_cast<double>(std::clock() - begin) /
                                               CLOCKS_PER_SEC);
    });
    EXPECT_EQ(manager.ReConnectDeviceEx(), 0);
    EXPECT_LT(worked, kParked / 2) << "of the processor";
}

}  // namespace
}  // namespace Korvex3Sync::tests
