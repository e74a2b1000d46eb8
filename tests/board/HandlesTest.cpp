#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "board/EveryCall.h"
#include "board/OpenBoard.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using namespace zr3DHandiDLPdev;
using testing::ElementsAre;
using virtual_head::HeadDescription;

constexpr std::chrono::seconds kPatience{60};

TEST(Handles, NullUnknownAndClosedOnesFailInEveryFunction) {
    const RequestedHead head;
    OpenedBoard board;
    void* const closed = board.handle;
    ASSERT_TRUE(zr3DExitHidDev(board.handle));
    EXPECT_EQ(board.handle, nullptr);
    OpenedBoard other;
    head->GetJournal().Clear();
    int local = 0;
    for (void* const handle : {static_cast<void*>(nullptr), static_cast<void*>(&local), closed}) {
        for (const BoardCall& each : EveryCall()) {
            EXPECT_FALSE(each.call(handle)) << each.function << " " << handle;
        }
        void* copy = handle;
        EXPECT_FALSE(zr3DExitHidDev(copy));
    }
    EXPECT_TRUE(head->GetJournal().Texts().empty()) << "nothing reached the board";
}

TEST(Handles, AreNeverGivenTwice) {
    const RequestedHead head;
    std::set<void*> seen;
    for (int round = 0; round < 50; ++round) {
        const OpenedBoard board;
        EXPECT_TRUE(seen.insert(board.handle).second);
    }
}

TEST(Opening, TakesTheIdentifiersAsHexadecimalText) {
    HeadDescription description;
    description.boardSerial = "S1";
    const RequestedHead head(description);
    const struct {
        const char* vendor;
        const char* product;
        const char* serial;
        bool opens;
    } cases[] = {
        {"3267", "5752", "", true},     {"3267", "5752", "S1", true},
        {"03267", "05752", "S1", true}, {"3267", "5752", "s1", false},
        {"3267", "5752", "S", false},   {"3267", "5752", "S11", false},
        {"5752", "3267", "", false},    {"3267", "0", "", false},
        {"12903", "22354", "", false},  {"13267", "5752", "", false},
        {"", "5752", "", false},        {"3267", "", "", false},
        {"0x3267", "5752", "", false},  {" 3267", "5752", "", false},
        {"3267 ", "5752", "", false},   {"-3267", "5752", "", false},
        {"32g7", "5752", "", false},    {nullptr, "5752", "", false},
        {"3267", nullptr, "", false},   {"3267", "5752", nullptr, false},
    };
    for (const auto& each : cases) {
        int local = 0;
        void* handle = &local;
        EXPECT_EQ(zr3DInitHidDev(handle, each.vendor, each.product, each.serial), each.opens);
        EXPECT_EQ(handle != nullptr, each.opens) << "a failed open leaves the handle null";
        if (handle) {
            EXPECT_TRUE(zr3DExitHidDev(handle));
        }
    }
    void* handle = nullptr;
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", std::string(10000, 'S').c_str()));
}

TEST(Opening, StandsInTheJournalWithTheClosing) {
    HeadDescription description;
    description.boardSerial = "S1";
    const RequestedHead head(description);
    void* handle = nullptr;
    EXPECT_TRUE(zr3DInitHidDev(handle, "3267", "5752", "S1"));
    EXPECT_TRUE(zr3DExitHidDev(handle));
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", "another"));
    EXPECT_FALSE(zr3DInitHidDev(handle, "abCD", "1", ""));
    EXPECT_THAT(head->GetJournal().Texts(),
                ElementsAre("zr3DInitHidDev(3267, 5752, S1) = true", "zr3DExitHidDev() = true",
                            "zr3DInitHidDev(3267, 5752, another) = false",
                            "zr3DInitHidDev(abcd, 0001, ) = false"));
}

TEST(Opening, MeetsFaults) {
    const RequestedHead head;
    ASSERT_TRUE(head->GetFaults().Fail("zr3DInitHidDev", 2));
    void* handle = nullptr;
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", ""));
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", ""));
    EXPECT_EQ(handle, nullptr);
    EXPECT_TRUE(zr3DInitHidDev(handle, "3267", "5752", ""));
    EXPECT_TRUE(zr3DExitHidDev(handle));
}

TEST(Opening, ThatHangsFailsByItself) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    ASSERT_TRUE(head->GetFaults().Hang("zr3DInitHidDev"));
    void* handle = nullptr;
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", ""));
    EXPECT_EQ(handle, nullptr);
}

TEST(Closing, ThatFailsOrHangsGivesFalseAndClosesAllTheSame) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    for (const bool hangs : {false, true}) {
        OpenedBoard board;
        void* const closed = board.handle;
        ASSERT_TRUE(hangs ? head->GetFaults().Hang("zr3DExitHidDev")
                          : head->GetFaults().Fail("zr3DExitHidDev", 1));
        EXPECT_FALSE(zr3DExitHidDev(board.handle));
        EXPECT_EQ(board.handle, nullptr);
        EXPECT_FALSE(zr3DEnableHeartbeat(closed, true));
    }
}

TEST(Opening, MayBeDoneMoreThanOnce) {
    const RequestedHead head;
    OpenedBoard first;
    {
        const OpenedBoard second;
        EXPECT_NE(first.handle, second.handle);
        EXPECT_TRUE(zr3DSetIRLaserLevel(second.handle, 6));
    }
    EXPECT_TRUE(zr3DSetProjectorBrightness(first.handle, 44)) << "closing one leaves the other";
    EXPECT_EQ(head->Board().State().irLaserLevel, 6);
    EXPECT_EQ(head->Board().State().projectorBrightness, 44);
}

TEST(Hanging, CallGivesFalseByItselfAndTheNextOneToo) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(head->GetFaults().Hang("zr3DSetIRLaserLevel"));
    EXPECT_FALSE(zr3DSetIRLaserLevel(board.handle, 8));
    EXPECT_FALSE(zr3DSetProjectorBrightness(board.handle, 44)) << "the board still hangs";
    head->GetFaults().ReleaseHangs();
    EXPECT_TRUE(zr3DProject(board.handle, PROJECTTYPE{2}));
    EXPECT_EQ(head->Board().State().irLaserLevel, 1);
    EXPECT_EQ(head->Board().State().projectorBrightness, 10)
        << "a command that the board did not take is not executed later";
    EXPECT_EQ(head->Board().State().projectType, 2);
}

TEST(Hanging, CallEndsWhenAnotherThreadCloses) {
    const RequestedHead head;
    OpenedBoard board;
    ASSERT_TRUE(head->GetFaults().Hang("zr3DSetIRLaserLevel"));
    ASSERT_TRUE(head->GetFaults().Hang("SnapShot"));
    os::Event ended;
    std::thread caller([&ended, handle = board.handle] {
        EXPECT_FALSE(zr3DSetIRLaserLevel(handle, 8));
        ended.Set();
    });
    EXPECT_TRUE(head->GetFaults().WaitForHang("zr3DSetIRLaserLevel", kPatience));
    std::thread camera([&head] { EXPECT_TRUE(head->GetFaults().Meet("SnapShot")); });
    EXPECT_TRUE(head->GetFaults().WaitForHang("SnapShot", kPatience));

    EXPECT_TRUE(zr3DExitHidDev(board.handle));
    EXPECT_EQ(ended.Wait(kPatience), os::WaitResult::Signalled);
    caller.join();
    EXPECT_TRUE(head->GetFaults().WaitForHang("SnapShot", std::chrono::milliseconds(0)))
        << "closing the board lets a camera that hangs go on hanging";
    head->GetFaults().ReleaseHangs();
    camera.join();
}

TEST(Closing, BesideCallsOfManyThreadsIsSafe) {
    const RequestedHead head;
    for (int round = 0; round < 20; ++round) {
        OpenedBoard board;
        std::atomic<int> succeeded{0};
        std::vector<std::thread> callers;
        for (int number = 0; number < 4; ++number) {
            callers.emplace_back([&succeeded, handle = board.handle] {
                unsigned char first = 0;
                unsigned char second = 0;
                while (zr3DQueryCurrentStatus(handle, first, second)) {
                    ++succeeded;
                }
            });
        }
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (succeeded < 20 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        EXPECT_GE(succeeded, 20);
        EXPECT_TRUE(zr3DExitHidDev(board.handle));
        for (std::thread& caller : callers) {
            caller.join();
        }
    }
}

TEST(Closing, ByTwoThreadsAtOnceSucceedsOnce) {
    const RequestedHead head;
    for (int round = 0; round < 20; ++round) {
        OpenedBoard board;
        std::atomic<int> closed{0};
        const auto close = [&closed, handle = board.handle]() mutable {
            closed += zr3DExitHidDev(handle) ? 1 : 0;
        };
        std::thread first(close);
        std::thread second(close);
        first.join();
        second.join();
        EXPECT_EQ(closed, 1);
        board.handle = nullptr;
    }
}

TEST(TwoCallers, OfOneBoardEachGetTheirAnswers) {
    const RequestedHead head;
    const OpenedBoard board;
    const auto call = [handle = board.handle](int set, int query) {
        for (int value = 0; value < 500; ++value) {
            int read = -1;
            EXPECT_TRUE(zr3DSetWorkTime(handle, set, value));
            EXPECT_TRUE(zr3DQueryWorkTime(handle, query, read));
            EXPECT_EQ(read, value);
        }
    };
    std::thread first(call, 82, 83);
    std::thread second(call, 84, 85);
    first.join();
    second.join();
}

TEST(AnotherRequest, EndsTheHandlesOfTheHeadBefore) {
    auto first = std::make_unique<RequestedHead>();
    OpenedBoard board;
    first.reset();
    for (const BoardCall& each : EveryCall()) {
        EXPECT_FALSE(each.call(board.handle)) << each.function;
    }
    const RequestedHead second;
    EXPECT_FALSE(zr3DEnableHeartbeat(board.handle, true));
    EXPECT_FALSE(second->Board().State().heartbeat);
    EXPECT_TRUE(zr3DExitHidDev(board.handle));
    EXPECT_TRUE(second->GetJournal().Texts().empty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
