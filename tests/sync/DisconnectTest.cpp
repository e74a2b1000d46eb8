#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// Keeps the first scan callback inside until it is opened.
struct GatedCallback {
    os::Event entered;
    os::Event open;
    std::atomic<int> calls{0};

    static void Receive(const void* const& context, std::vector<unsigned char*>&, const int&,
                        const int&, std::vector<int>&) {
        auto& gate = *static_cast<GatedCallback*>(const_cast<void*>(context));
        if (gate.calls++ == 0) {
            gate.entered.Set();
            gate.open.Wait();
        }
    }
};

TEST(Disconnect, EndsWithinTheRunningCallbackOneSnapAndOnePoll) {
    Recorder::Get().Reset();
    GatedCallback gate;
    auto manager = std::make_unique<IManagerSync>();
    ASSERT_EQ(ConnectRecorded(*manager), STATUS_SUCCESS);
    const os::ScopedTimeScale slow(100);  // the next poll comes in 20 s
    manager->Frames().SetScanCallBackFunction(&GatedCallback::Receive, &gate);
    manager->Status().SetStatusCallBackFunction(
        [](const void* const&, const unsigned char&, const unsigned char&) {}, &gate);
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", 2)) << "connect and a poll";
    // More than a snap and a callback would be there to take.
    for (unsigned char key = 0; key < 20; ++key) {
        Recorder::Get().PushSnap({0, false, support::MonoFrame(std::size_t{32}, 1, 2, key)});
    }
    gate.entered.Wait();
    const support::BlockingCall closing([&] { manager.reset(); });
    EXPECT_TRUE(closing.WaitUntilBlocked()) << "the grab thread is waited for";
    const auto snaps = Recorder::Get().Count("SnapShot(C1)");
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 0u) << "the callback runs";
    gate.open.Set();
    ASSERT_TRUE(closing.WaitUntilReturned());
    EXPECT_EQ(gate.calls, 1);
    EXPECT_LE(Recorder::Get().Count("SnapShot(C1)"), snaps + 1);
    EXPECT_LE(Recorder::Get().Count("zr3DQueryCurrentStatus"), polls + 1);
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 1u);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 1u);
}

/// A camera that gives frames back to back, and is held up in one of its snaps.
struct HeldCamera {
    static constexpr std::uint64_t kHeldSnap = 5;

    explicit HeldCamera(std::string handle) : name(std::move(handle)) {
        Recorder::Get().OnCall("SnapShot(" + name + ")", [this] {
            Recorder::Get().PushSnap({0, false, support::MonoFrame(std::size_t{32}, 1, 2, 0)});
            if (Snaps() == kHeldSnap) {
                held.Set();
                open.Wait();
            }
        });
    }
    std::uint64_t Snaps() const { return Recorder::Get().Count("SnapShot(" + name + ")"); }

    const std::string name;
    os::Event held;
    os::Event open;
};

TEST(Disconnect, WaitsForOneSnapOfEachCameraAtTheMost) {
    Recorder::Get().Reset();
    Recorder::Get().Attach({{"A"}, {"B"}, {"C"}});
    std::list<HeldCamera> cameras;
    for (const char* name : {"C1", "C2", "C3"}) {
        cameras.emplace_back(name);
    }
    auto manager = std::make_unique<IManagerSync>();
    SerialList serials{"A", "B", "C"};
    ASSERT_EQ(manager->Connect("any", "BOARD", serials.Pointers(), {8, 8, 8}, {4, 4, 4}),
              STATUS_SUCCESS);
    for (HeldCamera& camera : cameras) {
        camera.held.Wait();
    }
    const support::BlockingCall closing([&] { manager.reset(); });
    for (HeldCamera& camera : cameras) {
        EXPECT_TRUE(closing.WaitUntilBlocked()) << camera.name;
        EXPECT_EQ(Recorder::Get().Count("UnlockOthers(" + camera.name + ")"), 0u);
        camera.open.Set();
        EXPECT_TRUE(Recorder::Get().WaitForCount("UnlockOthers(" + camera.name + ")", 1));
        EXPECT_EQ(camera.Snaps(), HeldCamera::kHeldSnap) << camera.name;
    }
    EXPECT_TRUE(closing.WaitUntilReturned());
    Recorder::Get().Reset();  // the cameras of this test go
}

}  // namespace
}  // namespace Korvex3Sync::tests
