#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "interface/Connected.h"
#include "interface/EveryExport.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/Golden.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// Every export with a handle whose answer depends on it, those with bodies of their own among
/// them.
std::vector<Export> EveryCheckedExport() {
    std::vector<Export> exports{
        {"DisConnectDevice", Kind::Standard,
         [](void* const& h) {
             void* handle = h;
             const RETSTATUS status = DisConnectDevice(handle);
             EXPECT_EQ(handle, status == STATUS_SUCCESS ? nullptr : h);
             return status;
         }},
        {"ReconnectDeviceWithFlags", Kind::AlwaysDirect,
         [](void* const& h) { return ReconnectDevice(h, true, true); }},
        {"GetFirewareVersion", Kind::Standard,
         [](void* const& h) {
             std::string version;
             return GetFirewareVersion(h, "any", "BOARD", version);
         }},
    };
    for (const Export& one : EveryExport()) {
        if (one.kind != Kind::Retired) {
            exports.push_back(one);
        }
    }
    return exports;
}

class UnknownHandle : public Connected, public testing::WithParamInterface<Export> {
protected:
    void ExpectToBeUnknown(void* handle) {
        const auto calls = Recorder::Get().CallsInOrder();
        EXPECT_EQ(GetParam().call(handle), STATUS_NOT_CONNECTED);
        EXPECT_EQ(Recorder::Get().CallsInOrder(), calls);
    }
};

TEST_P(UnknownHandle, MadeUp) {
    int mine = 0;
    ExpectToBeUnknown(&mine);
    ExpectToBeUnknown(reinterpret_cast<void*>(std::uintptr_t{1}));
}

TEST_P(UnknownHandle, BesideALiveOne) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    // Once it snaps, nothing that the grab thread calls is recorded.
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 1));
    ExpectToBeUnknown(static_cast<char*>(m_handle) + 8);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
}

TEST_P(UnknownHandle, Closed) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* const closed = m_handle;
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    ExpectToBeUnknown(closed);
}

TEST_P(UnknownHandle, EndedByAFailedFirmwareQuery) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Recorder::Get().FailNth("zr3DQueryProjectorFirewareVersion", 1);
    std::string version;
    ASSERT_EQ(GetFirewareVersion(m_handle, nullptr, "BOARD", version), STATUS_FAILED);
    ExpectToBeUnknown(m_handle);
}

TEST_P(UnknownHandle, IsRecordedAsACallAllTheSame) {
    support::Output output;
    int mine = 0;
    GetParam().call(&mine);
    EXPECT_TRUE(support::MatchesGolden("ExportCall", GetParam().name, output.End()));
}

INSTANTIATE_TEST_SUITE_P(All, UnknownHandle, testing::ValuesIn(EveryCheckedExport()),
                         [](const auto& row) { return std::string(row.param.name); });

class Handles : public Connected {};

TEST_F(Handles, AnUnknownOneLeavesTheOutputsAlone) {
    int mine = 0;
    int number = 77;
    char* text = nullptr;
    std::string version = "before";
    std::vector<unsigned char*> images;
    double exposure = 7.5;
    EXPECT_EQ(GetConnectCameraCount(&mine, number), STATUS_NOT_CONNECTED);
    EXPECT_EQ(GetCameraResolution(&mine, 0, number, number), STATUS_NOT_CONNECTED);
    EXPECT_EQ(GetCameraSerialNumber(&mine, 0, text), STATUS_NOT_CONNECTED);
    EXPECT_EQ(GetFirewareVersion(&mine, nullptr, "", version), STATUS_NOT_CONNECTED);
    EXPECT_EQ(SnapColorImage(&mine, images, number, number, 0, exposure, number, CONTROL_ROUTE_1),
              STATUS_NOT_CONNECTED);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(version, "before");
    EXPECT_TRUE(images.empty());
}

TEST_F(Handles, AreLookedAtBehindTheModeButInTheAlwaysDirectExports) {
    int mine = 0;
    SetServiceMode(true);
    for (const Export& one : EveryExport()) {
        SCOPED_TRACE(one.name);
        switch (one.kind) {
            case Kind::Standard:  // no client
            case Kind::AlwaysDirect:
                EXPECT_EQ(one.call(&mine), STATUS_NOT_CONNECTED);
                break;
            case Kind::DirectOnly:
                EXPECT_EQ(one.call(&mine), STATUS_SYNCHRONISM_TYPE);
                break;
            case Kind::Retired:
                EXPECT_EQ(one.call(&mine), STATUS_NOT_SUPPORTED);
                break;
        }
    }
}

TEST_F(Handles, OfTwoClosingsAtTheSameTimeOneClosesAndOneFindsNothing) {
    for (int round = 0; round < 50; ++round) {
        Recorder::Get().Reset();
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        std::atomic<int> ready{0};
        const auto close = [&, handle = m_handle] {
            void* mine = handle;
            ++ready;
            while (ready != 2) {
            }
            return DisConnectDevice(mine);
        };
        auto other = std::async(std::launch::async, close);
        const RETSTATUS here = close();
        const RETSTATUS there = other.get();
        EXPECT_EQ(here + there, STATUS_SUCCESS + STATUS_NOT_CONNECTED) << here << there;
        EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 1u);
        m_handle = nullptr;
    }
}

TEST_F(Handles, ADisconnectBesideCallsOnEightThreadsLetsThemLeaveAndThenNothingIsCalled) {
    const os::ScopedTimeScale fast(0.001);
    const auto exports = EveryExport();
    for (int round = 0; round < 5; ++round) {
        Recorder::Get().Reset();
        GiveColorFrames();
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        void* const handle = m_handle;
        ASSERT_EQ(SetStatusCallBackFunction(
                      handle, [](const void* const&, const unsigned char&, const unsigned char&) {},
                      this),
                  STATUS_SUCCESS);
        std::atomic<int> answered{0};
        std::vector<std::thread> callers;
        for (std::size_t caller = 0; caller < 8; ++caller) {
            callers.emplace_back([&, caller] {
                for (std::size_t i = caller;; ++i) {
                    const Export& one = exports[i % exports.size()];
                    const bool snapshot = std::string_view(one.name).starts_with("Snap");
                    if (one.kind == Kind::Retired || (snapshot && caller != 0)) {
                        continue;  // one snapshot at a time on a handle
                    }
                    if (one.call(handle) == STATUS_NOT_CONNECTED) {
                        return;
                    }
                    ++answered;
                }
            });
        }
        ASSERT_TRUE(support::WaitUntil([&] { return answered > 100; }));
        EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
        const auto calls = Recorder::Get().CallsInOrder().size();
        EXPECT_EQ(Recorder::Get().Handles(), 0u) << "board and cameras are closed";
        for (std::thread& caller : callers) {
            caller.join();
        }
        EXPECT_EQ(Recorder::Get().CallsInOrder().size(), calls);
    }
}

TEST_F(Handles, ADisconnectWaitsForACallThatIsInside) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    os::Event entered;
    os::Event open;
    Recorder::Get().OnCall("zr3DSetProjectorBrightness", [&] {
        entered.Set();
        open.Wait();
    });
    const auto inside =
        std::async(std::launch::async, [handle = m_handle] { SetProjectorBrightness(handle, 5); });
    entered.Wait();
    void* const handle = m_handle;
    auto closing = std::async(std::launch::async, [this] { return DisConnectDevice(m_handle); });
    // Asked with a call that does not wait for the one inside.
    ScanStatistics statistics;
    ASSERT_TRUE(support::WaitUntil([&] {
        return GetScanStatistics(handle, statistics) == STATUS_NOT_CONNECTED;
    })) << "the handle is unknown first";
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 0u);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 0u);
    open.Set();
    EXPECT_EQ(closing.get(), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 1u);
}

TEST_F(Handles, AFailedFirmwareQueryLeavesBeforeItClosesAndWaitsForTheOthers) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    os::Event asked;
    os::Event open;
    Recorder::Get().FailAlways("zr3DQueryProjectorFirewareVersion");
    // Does not take the device lock, so the query can fail at the same time.
    Recorder::Get().OnCall("zr3DResetFPGA", [&] {
        asked.Set();
        open.Wait();
    });
    auto inside = std::async(std::launch::async,
                             [handle = m_handle] { return ReconnectDevice(handle, true, false); });
    asked.Wait();
    void* const handle = m_handle;
    auto query = std::async(std::launch::async, [handle] {
        std::string version;
        return GetFirewareVersion(handle, nullptr, "BOARD", version);
    });
    ASSERT_TRUE(support::WaitUntil(
        [&] { return Project(handle, PROJECT_PATTERN_1) == STATUS_NOT_CONNECTED; }));
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 0u);
    open.Set();
    EXPECT_EQ(inside.get(), STATUS_SUCCESS);
    EXPECT_EQ(query.get(), STATUS_FAILED);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 1u);
    m_handle = nullptr;
}

TEST_F(Handles, ASnapshotThatWaitsWhenItsConnectionIsClosedEndsAtOnce) {
    for (const int images : {1, 2, 3}) {
        Recorder::Get().Reset();
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        int given = 0;
        std::optional<os::ScopedTimeScale> slow;
        recorder::OnSingleColorTrigger([&] {
            if (++given < images) {
                Recorder::Get().PushSnap({0, false, support::ColorFrame(32, 7, 1)});
            } else {
                slow.emplace(20);  // the frame that never comes is waited for half an hour
            }
        });
        std::vector<unsigned char*> taken;
        auto snapshot = std::async(std::launch::async, [&, handle = m_handle] {
            int size = 0;
            std::vector<double> exposures{1.0, 2.0};
            std::vector<int> gains{1, 2};
            return SnapColorImageForIR(handle, taken, size, size, 0, exposures, gains,
                                       CONTROL_ROUTE_1);
        });
        ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DSetVideoTrigleMode",
                                                 2 * static_cast<std::uint64_t>(images)));
        EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
        EXPECT_EQ(snapshot.get(), STATUS_FAILED);
        EXPECT_TRUE(taken.empty());
    }
}

TEST_F(Handles, AReconnectionThatWaitsForARestartOfTheBoardDoesNotHoldUpADisconnect) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    std::optional<os::ScopedTimeScale> slow;
    Recorder::Get().OnCall("zr3DResetDevice", [&] { slow.emplace(100); });  // 7 s become 700
    auto reconnection =
        std::async(std::launch::async, [handle = m_handle] { return ReconnectDevice(handle); });
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DResetDevice", 1));
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(reconnection.get(), STATUS_FAILED);
}

}  // namespace
}  // namespace Korvex3Sync::tests
