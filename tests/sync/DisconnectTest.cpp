#include <glog/logging.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/PackedFrames.h"
#include "support/WaitUntil.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// The snaps that had begun on each camera when the disconnect began to wait for a grab thread.
class SnapsAtEachWait : public google::LogSink {
public:
    using Snaps = std::map<std::string, std::uint64_t>;

    explicit SnapsAtEachWait(std::vector<std::string> cameras) : m_cameras(std::move(cameras)) {
        google::AddLogSink(this);
    }
    ~SnapsAtEachWait() override { google::RemoveLogSink(this); }

    using google::LogSink::send;
    void send(google::LogSeverity, const char*, const char*, int, const google::LogMessageTime&,
              const char* message, std::size_t length) override {
        if (std::string_view(message, length) == "WaitForSingleObject ") {
            std::lock_guard lock(m_mutex);
            m_waits.push_back(Now());
        }
    }
    Snaps Now() const {
        Snaps snaps;
        for (const std::string& camera : m_cameras) {
            snaps[camera] = Recorder::Get().Count("SnapShot(" + camera + ")");
        }
        return snaps;
    }
    std::vector<Snaps> Waits() const {
        std::lock_guard lock(m_mutex);
        return m_waits;
    }

private:
    const std::vector<std::string> m_cameras;
    mutable std::mutex m_mutex;
    std::vector<Snaps> m_waits;
};

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
    const SnapsAtEachWait snaps({"C1"});
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
    std::thread closing([&] { manager.reset(); });
    EXPECT_TRUE(support::WaitUntil([&] { return snaps.Waits().size() == 1; }));
    const auto before = snaps.Now();
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 0u) << "the callback runs";
    gate.open.Set();
    closing.join();
    EXPECT_EQ(gate.calls, 1);
    EXPECT_LE(snaps.Now().at("C1"), before.at("C1") + 1);
    EXPECT_LE(Recorder::Get().Count("zr3DQueryCurrentStatus"), polls + 1);
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 1u);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 1u);
}

TEST(Disconnect, WaitsForOneSnapOfEachCameraAtTheMost) {
    Recorder::Get().Reset();
    Recorder::Get().Attach({{"A"}, {"B"}, {"C"}});
    const std::vector<std::string> cameras{"C1", "C2", "C3"};
    const SnapsAtEachWait snaps(cameras);
    // Frames come back to back; at some time they end, should a camera not.
    Recorder::Get().OnCall("SnapShot", [] {
        if (Recorder::Get().Count("SnapShot") < 20000) {
            Recorder::Get().PushSnap({0, false, support::MonoFrame(std::size_t{32}, 1, 2, 0)});
        }
    });
    auto manager = std::make_unique<IManagerSync>();
    SerialList serials{"A", "B", "C"};
    ASSERT_EQ(manager->Connect("any", "BOARD", serials.Pointers(), {8, 8, 8}, {4, 4, 4}),
              STATUS_SUCCESS);
    for (const std::string& camera : cameras) {
        ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot(" + camera + ")", 1));
    }
    manager.reset();
    const auto waits = snaps.Waits();
    const auto after = snaps.Now();
    ASSERT_EQ(waits.size(), cameras.size());
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        EXPECT_LE(after.at(cameras[i]), waits[i].at(cameras[i]) + 1) << cameras[i];
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
