// What clients see when the service dies, stands still, or is started twice.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "platform/os/File.h"
#include "platform/tunnel/AreaLayout.h"
#include "support/WaitUntil.h"
#include "survival/Processes.h"
#include "survival/World.h"

namespace Korvex3Sync::tests::survival {

namespace {

/// A failed call after a moment; waits for it.
std::optional<Event> FailedCallAfter(ApplicationProcess& application, Moment after) {
    return application.WaitFor(
        after, [](const Event& event) { return event.kind == "call" && event.number != 7; });
}

TEST(Survival, ServiceKilledInACall) {
    World world;
    const auto application = world.Application("calls");
    ASSERT_TRUE(application->WaitFor("up", 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const Moment killed = Now();
        world.KillService();
        EXPECT_TRUE(FailedCallAfter(*application, killed));
        dice.Pause(kLongPauseMs);
        const Moment returned = world.StartService();
        const auto up = application->WaitFor("up", returned);
        EXPECT_TRUE(up) << "no call succeeded";
        return Recovery{returned, up ? std::optional(up->time) : std::nullopt};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, ServiceKilledInAScan) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        world.KillService();
        dice.Pause(kLongPauseMs);
        const Moment returned = world.StartService();
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

/// Whether the writer of the area holds the lock of a segment now.
bool HoldsASegmentLock(const std::filesystem::path& area) {
    const os::File file(::open(area.c_str(), O_RDWR | O_CLOEXEC));
    struct flock range {};
    range.l_type = F_RDLCK;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(tunnel::EntryLock(0));
    range.l_len = static_cast<off_t>(tunnel::kMostEntries);
    return file && ::fcntl(file.Descriptor(), F_OFD_GETLK, &range) == 0 && range.l_type == F_WRLCK;
}

/// Stops the service at a moment at which it holds a segment's lock.
void StopWhileItHoldsALock(pid_t service) {
    const std::filesystem::path area = AreaOfSets();
    EXPECT_TRUE(support::WaitUntil([&] {
        StopProcess(service);
        if (HoldsASegmentLock(area)) {
            return true;
        }
        ::kill(service, SIGCONT);
        return false;
    }));
}

TEST(Survival, ServiceKilledWhileItHoldsALock) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        StopWhileItHoldsALock(world.Service());
        world.KillService();
        dice.Pause(kLongPauseMs);
        const Moment returned = world.StartService();
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, ServiceStopped) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int round, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const pid_t service = world.Service();
        const Moment stopped = Now();
        StopProcess(service);
        if (round == 0) {
            EXPECT_TRUE(FailedCallAfter(*application, stopped)) << "a call has a limit";
        } else {
            dice.Pause(3 * kLongPauseMs);
        }
        if (round % 2 == 1) {
            // It never continues.
            world.KillService();
            const Moment returned = world.StartService();
            return Recovery{returned, SteadySetsAfter(*application, returned)};
        }
        const Moment returned = Now();
        ::kill(service, SIGCONT);
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, SecondService) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const Moment started = Now();
        EXPECT_EQ(WaitForEnd(world.StartAnotherService()), kAlreadyRunning);
        const Moment ended = Now();
        const auto next = SteadySetsAfter(*application, ended);
        for (const Event& event : application->Events()) {
            EXPECT_FALSE(event.kind == "down" && event.time > started) << "the scan was disturbed";
        }
        return Recovery{ended, next};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
