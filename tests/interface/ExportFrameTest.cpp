#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "interface/Connected.h"
#include "interface/EveryExport.h"
#include "platform/os/TimeScale.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using testing::IsEmpty;

/// Time runs faster, and a snapshot gets its frames.
class ExportFrame : public Connected, public testing::WithParamInterface<Export> {
protected:
    ExportFrame() { GiveColorFrames(); }
    bool Retired() const { return GetParam().kind == Kind::Retired; }

    os::ScopedTimeScale m_scale{0.1};
};

TEST_P(ExportFrame, ANullHandleIsNotConnectedInEitherMode) {
    void* const null = nullptr;
    const RETSTATUS expected = Retired() ? STATUS_NOT_SUPPORTED : STATUS_NOT_CONNECTED;
    for (bool service : {false, true}) {
        SetServiceMode(service);
        Output output;
        EXPECT_EQ(GetParam().call(null), expected);
        const auto lines = output.End();
        if (Retired()) {
            EXPECT_THAT(lines, IsEmpty());
        } else {
            EXPECT_TRUE(MatchesGolden("ExportCall", GetParam().name, lines));
        }
    }
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_P(ExportFrame, InDirectModeTheManagerAnswers) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Output output;
    const auto calls = Recorder::Get().Calls();
    EXPECT_EQ(GetParam().call(m_handle), Retired() ? STATUS_NOT_SUPPORTED : STATUS_SUCCESS);
    auto lines = output.End();
    if (Retired()) {
        EXPECT_THAT(lines, IsEmpty());
        EXPECT_EQ(Recorder::Get().Calls(), calls);
    } else {
        lines.resize(1);  // what the operation itself says comes after it
        EXPECT_TRUE(MatchesGolden("ExportCall", GetParam().name, lines));
    }
}

TEST_P(ExportFrame, InServiceModeWithoutAClientOnlyTheAlwaysDirectReachesTheDevices) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    const auto calls = Recorder::Get().Calls();
    SetServiceMode(true);
    const RETSTATUS status = GetParam().call(m_handle);
    switch (GetParam().kind) {
        case Kind::Standard:
            EXPECT_EQ(status, STATUS_NOT_CONNECTED);
            break;
        case Kind::DirectOnly:
            EXPECT_EQ(status, STATUS_SYNCHRONISM_TYPE);
            break;
        case Kind::AlwaysDirect:
            EXPECT_EQ(status, STATUS_SUCCESS);
            break;
        case Kind::Retired:
            EXPECT_EQ(status, STATUS_NOT_SUPPORTED);
            break;
    }
    EXPECT_EQ(Recorder::Get().Calls() != calls, GetParam().kind == Kind::AlwaysDirect);
}

/// What became of a thread that was cancelled before it made a call.
struct Cancelled {
    bool returned = false;
    bool wentOn = false;
};

template <class Call>
Cancelled CallCancelled(Call call) {
    Cancelled cancelled;
    std::thread thread([&] {
        pthread_cancel(pthread_self());
        call();
        cancelled.returned = true;
        pthread_testcancel();
        cancelled.wentOn = true;
    });
    thread.join();
    return cancelled;
}

TEST_P(ExportFrame, AThreadThatIsCancelledInsideEndsAfterwards) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    const Cancelled cancelled = CallCancelled([this] { GetParam().call(m_handle); });
    EXPECT_TRUE(cancelled.returned);
    EXPECT_FALSE(cancelled.wentOn);
}

INSTANTIATE_TEST_SUITE_P(All, ExportFrame, testing::ValuesIn(EveryExport()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Connected, AThreadThatIsCancelledInAnExportOfItsOwnFrameEndsAfterwards) {
    int count = 0;
    bool onU3 = false;
    std::string version;
    std::vector<char*> serials;
    std::vector<int> sizes;
    std::vector<bool> isColor;
    const std::vector<std::function<void()>> calls{
        [&] { Connect(); },
        [&] { DisConnectDevice(m_handle); },
        [&] { ReconnectDevice(nullptr, false, false); },
        [&] { GetFirewareVersion("", version); },
        [&] { GetFirewareVersion(nullptr, "any", "", version); },
        [&] { GetCamerasInformation("KV", serials, sizes, sizes, isColor, count); },
        [&] { GetCameraCount("KV", count); },
        [&] { IsConnectedOnU3("", onU3); },
    };
    for (std::size_t number = 0; number < calls.size(); ++number) {
        const Cancelled cancelled = CallCancelled(calls[number]);
        EXPECT_TRUE(cancelled.returned) << number;
        EXPECT_FALSE(cancelled.wentOn) << number;
    }
    for (const char* serial : serials) {
        delete[] serial;
    }
}

TEST_F(Connected, RetiredGettersTouchNothing) {
    int gain = 77;
    double exposure = 7.5;
    EXPECT_EQ(GetCameraGain(nullptr, 0, gain), STATUS_NOT_SUPPORTED);
    EXPECT_EQ(GetCameraExposure(nullptr, 0, exposure), STATUS_NOT_SUPPORTED);
    EXPECT_EQ(gain, 77);
    EXPECT_EQ(exposure, 7.5);
}

TEST_F(Connected, AWorkTimeInServiceModeIsRefusedAndSendsNothing) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetServiceMode(true);
    EXPECT_EQ(SetStrobeWorkTime(m_handle, 1, 2), STATUS_SYNCHRONISM_TYPE);
    EXPECT_EQ(SetStrobeWorkTime(nullptr, 1, 2), STATUS_NOT_CONNECTED);
    EXPECT_EQ(Recorder::Get().Count("zr3DSetLedWorkTime"), 0u);
}

TEST_F(Connected, TheDistanceLedsAreLoggedOnTheirWayOutToo) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Output output;
    EXPECT_EQ(SetDistanceIndicate(m_handle, DISTANCE_STATUS_2), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetDistanceIndicate", "sent", output.End()));
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DSetDistanceIndicateState(B1, 3)");
}

}  // namespace
}  // namespace Korvex3Sync::tests
