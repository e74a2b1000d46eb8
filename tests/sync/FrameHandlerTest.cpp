#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "platform/os/Event.h"
#include "support/BlockingCall.h"
#include "support/Deadline.h"
#include "support/FramePixels.h"
#include "support/Golden.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;

/// Image sets that a scan callback received.
class Sets {
public:
    struct Set {
        std::vector<int> lastPixels;  // of each image
        int width;
        int height;
        std::vector<int> info;
        bool operator==(const Set&) const = default;
    };

    static void Receive(const void* const& context, std::vector<unsigned char*>& images,
                        const int& width, const int& height, std::vector<int>& imageInfo) {
        auto* const sets = static_cast<Sets*>(const_cast<void*>(context));
        std::lock_guard lock(sets->m_mutex);
        Set set{{}, width, height, imageInfo};
        for (unsigned char* image : images) {
            set.lastPixels.push_back(image[kPixels - 1]);
        }
        sets->m_seen.push_back(set);
        if (sets->action) {
            sets->action(images, imageInfo);
        }
        sets->m_changed.notify_all();
    }
    bool WaitFor(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kDeadline, [&] { return m_seen.size() >= count; });
    }
    std::vector<Set> Seen() {
        std::lock_guard lock(m_mutex);
        return m_seen;
    }

    std::function<void(std::vector<unsigned char*>&, std::vector<int>&)> action;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Set> m_seen;
};

class FrameHandler : public testing::Test {
protected:
    FrameHandler() { Recorder::Get().Reset(); }
    void Scan() {
        ASSERT_EQ(ConnectRecorded(m_manager), STATUS_SUCCESS);
        ASSERT_EQ(m_manager.Frames().SetScanCallBackFunction(&Sets::Receive, &m_sets),
                  STATUS_SUCCESS);
    }
    static void Mono(unsigned char value, unsigned char key) {
        Recorder::Get().PushSnap(
            {0, false,
             support::MonoFrame(kPixels, value, static_cast<unsigned char>(value + 1), key)});
    }
    static void Color(unsigned char value, unsigned char key) {
        Recorder::Get().PushSnap({0, false, support::ColorFrame(kPixels, value, key)});
    }
    /// Waits until the frames that were pushed have been handled.
    static bool Handled(std::uint64_t frames) { return Recorder::Get().WaitForHandled(frames); }

    Sets m_sets;
    IManagerSync m_manager;
};

TEST_F(FrameHandler, MonoAndColourOfOneKeyReachTheCallbackAsOneSet) {
    Scan();
    Mono(10, 200);
    Color(30, 200);
    ASSERT_TRUE(m_sets.WaitFor(1));
    EXPECT_EQ(m_sets.Seen().front(), (Sets::Set{{10, 11, 30}, 8, 4, {1, 1, 1}}));
}

TEST_F(FrameHandler, AMonoWithoutColourIsDeliveredWhenTheNextArrives) {
    Scan();
    Mono(10, 1);
    Mono(20, 2);
    Color(40, 2);
    ASSERT_TRUE(m_sets.WaitFor(2));
    const auto seen = m_sets.Seen();
    EXPECT_EQ(seen[0], (Sets::Set{{10, 11}, 8, 4, {1, 1}}));
    EXPECT_EQ(seen[1], (Sets::Set{{20, 21, 40}, 8, 4, {1, 1, 1}}));
}

TEST_F(FrameHandler, AColourFrameWithoutItsMonoIsDroppedInSilence) {
    Scan();
    Color(40, 2);
    Mono(10, 3);
    Mono(20, 4);
    ASSERT_TRUE(m_sets.WaitFor(1));
    EXPECT_EQ(m_sets.Seen().front(), (Sets::Set{{10, 11}, 8, 4, {1, 1}}));
}

TEST_F(FrameHandler, WithTheCallbackClearedFramesArePairedAndNothingIsDelivered) {
    Scan();
    m_manager.Frames().SetScanCallBackFunction(nullptr, nullptr);
    Mono(10, 1);
    Color(30, 1);
    ASSERT_TRUE(Handled(2));
    EXPECT_TRUE(m_sets.Seen().empty());
    // The pair is gone: only the next mono waits when the callback comes back.
    Mono(20, 2);
    ASSERT_TRUE(Handled(3));
    m_manager.Frames().SetScanCallBackFunction(&Sets::Receive, &m_sets);
    Color(40, 2);
    ASSERT_TRUE(m_sets.WaitFor(1));
    EXPECT_EQ(m_sets.Seen().front(), (Sets::Set{{20, 21, 40}, 8, 4, {1, 1, 1}}));
}

TEST_F(FrameHandler, FramesOfACameraThatIsNotSharedAreIgnored) {
    Recorder::Get().Attach({{"A"}});
    SerialList serials{"A"};
    ASSERT_EQ(m_manager.Connect("any", "BOARD", serials.Pointers(), {8}, {4}), STATUS_SUCCESS);
    m_manager.Frames().SetScanCallBackFunction(&Sets::Receive, &m_sets);
    Mono(10, 1);
    Mono(20, 2);
    Mono(30, 3);
    ASSERT_TRUE(Handled(3));
    EXPECT_TRUE(m_sets.Seen().empty());
}

TEST_F(FrameHandler, WhatTheCallbackDoesToItsVectorsLosesNoBuffer) {
    m_sets.action = [](std::vector<unsigned char*>& images, std::vector<int>& info) {
        images.clear();
        info.clear();
    };
    Scan();
    for (unsigned char key = 0; key < 20; ++key) {
        Mono(10, key);
        Color(30, key);
    }
    ASSERT_TRUE(m_sets.WaitFor(20));
    EXPECT_EQ(m_sets.Seen().back(), (Sets::Set{{10, 11, 30}, 8, 4, {1, 1, 1}}));
}

TEST_F(FrameHandler, ABoardOperationInAScanCallbackIsToldOf) {
    m_sets.action = [this](auto&, auto&) { m_manager.Board().Project(PROJECT_OFF); };
    Scan();
    Output output(Output::Of::kOtherThreads);
    Mono(10, 1);
    Color(30, 1);
    ASSERT_TRUE(m_sets.WaitFor(1));
#ifdef KORVEX_CHECKS
    EXPECT_TRUE(MatchesGolden("OnFrame", "an operation in the scan callback", output.End()));
#else
    EXPECT_THAT(output.End(), testing::IsEmpty());
#endif
}

#ifdef KORVEX_CHECKS
TEST_F(FrameHandler, AnOperationInAScanCallbackIsToldOfBeforeItWaits) {
    const std::function<void(IManagerSync&)> operations[] = {
        [](IManagerSync& m) { m.Board().Project(PROJECT_OFF); },
        [](IManagerSync& m) {
            m.Board().SetStrobeControlledByTrigger(CONTROL_ROUTE_1, STROBE_STATE_1);
        },
        [](IManagerSync& m) {
            std::string version;
            m.Board().GetFirewareVersion("BOARD", version);
        },
        [](IManagerSync& m) {
            int width = 0;
            int height = 0;
            m.Cameras().GetCameraResolution(0, width, height);
        }};
    std::size_t next = 0;
    int grabThread = 0;
    os::Event inCallback;
    m_sets.action = [&](auto&, auto&) {
        grabThread = support::ThisThread();
        inCallback.Set();
        operations[next](m_manager);
    };
    Scan();
    for (unsigned char key = 0; next < std::size(operations) && !HasFailure(); ++next, ++key) {
        os::Event held;
        os::Event letGo;
        Recorder::Get().OnCall("zr3DSetProjectorBrightness", [&] {
            held.Set();
            letGo.Wait();
        });
        std::thread holder([this] { m_manager.Board().SetProjectorBrightness(1); });
        held.Wait();
        Output before(Output::Of::kOtherThreads);
        Mono(10, key);
        Color(30, key);
        inCallback.Wait();
        EXPECT_TRUE(support::WaitUntilBlocked(grabThread)) << "operation " << next;
        EXPECT_TRUE(MatchesGolden("OnFrame", "an operation in the scan callback", before.End()))
            << "operation " << next << " waits and says nothing";
        Output after(Output::Of::kOtherThreads);
        letGo.Set();
        holder.join();
        EXPECT_TRUE(m_sets.WaitFor(next + 1));
        EXPECT_THAT(after.End(), testing::IsEmpty()) << "it was said once";
        inCallback.Reset();
    }
}
#endif

TEST_F(FrameHandler, NoCallComesOnceTheSetterHasReturned) {
    Scan();
    for (int round = 0; round < 50; ++round) {
        for (unsigned char key = 0; key < 4; ++key) {
            Mono(10, key);
            Color(30, key);
        }
        m_manager.Frames().SetScanCallBackFunction(nullptr, nullptr);
        const auto seen = m_sets.Seen().size();
        ASSERT_TRUE(
            Recorder::Get().WaitForCount("SnapShot", Recorder::Get().Count("SnapShot") + 3));
        ASSERT_EQ(m_sets.Seen().size(), seen);
        m_manager.Frames().SetScanCallBackFunction(&Sets::Receive, &m_sets);
    }
}

TEST_F(FrameHandler, ACallbackThatThrowsLosesItsSetAndNothingElse) {
    m_sets.action = [thrown = false](auto&, auto&) mutable {
        if (!std::exchange(thrown, true)) {
            throw std::runtime_error("the application's own mistake");
        }
    };
    Scan();
    Output output(Output::Of::kOtherThreads);
    for (unsigned char key = 0; key < 2; ++key) {
        Mono(10, key);
        Color(30, key);
    }
    EXPECT_TRUE(m_sets.WaitFor(2));
    EXPECT_TRUE(MatchesGolden("OnFrame", "the scan callback throws", output.End()));
}

TEST_F(FrameHandler, DestructionWhileFramesWaitFreesThem) {
    auto manager = std::make_unique<IManagerSync>();
    ASSERT_EQ(ConnectRecorded(*manager), STATUS_SUCCESS);
    Mono(10, 1);
    ASSERT_TRUE(Handled(1));
    manager.reset();  // the address sanitizer tells when the waiting set is lost
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

}  // namespace
}  // namespace Korvex3Sync::tests
