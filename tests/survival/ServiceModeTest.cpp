// What an application of service mode sees when the service or the hub dies or hangs: the client
// of the library brings everything back by itself.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>

#include "support/WaitUntil.h"
#include "survival/HostWorld.h"

namespace Korvex3Sync::tests::survival {

namespace {

using ::testing::ElementsAreArray;

/// Calls that wait for a reconnection take as long as the start of a service and one limit.
constexpr double kReconnectMs = kStartMs + kCallLimitMs;
/// The scan watchdog's period: a gap in the images is never shorter.
constexpr std::uint64_t kWatchdogMs = 1000;

/// How many attempts to reconnect have begun after a moment.
std::size_t Reconnections(const ApplicationProcess& host, Moment after) {
    const std::vector<Event> events = host.Events();
    return static_cast<std::size_t>(
        std::count_if(events.begin(), events.end(), [after](const Event& event) {
            return event.time > after && event.kind == "debug" &&
                   event.word.starts_with("ReconnectCount =");
        }));
}

/// The service is another one, and its board and cameras were told all settings, in order.
void ExpectRestored(const HostWorld& world, pid_t before, int settings) {
    const pid_t service = world.RunningService();
    EXPECT_NE(service, before);
    EXPECT_THAT(world.JournalUntil(service, "zr3DSetVideoTrigleMode(6)"),
                ElementsAreArray(ExpectedJournal(HostSettings(settings))));
}

/// What the library has counted of its reconnections.
struct Gaps {
    std::uint64_t reconnections = 0;
    std::uint64_t milliseconds = 0;
};

Gaps GapsOf(ApplicationProcess& host) {
    const Moment asked = Now();
    Do(host, "gaps");
    const auto said = host.WaitFor("gaps", asked);
    EXPECT_TRUE(said);
    Gaps gaps;
    char slash = 0;
    std::istringstream(said ? said->word : "") >> gaps.reconnections >> slash >> gaps.milliseconds;
    EXPECT_EQ(slash, '/');
    return gaps;
}

/// Runs rounds in which `harm` does something to the service during a scan.
void RunHarmfulRounds(const std::string& how,
                      const std::function<void(HostWorld& world, Dice& dice)>& harm) {
    HostWorld world;
    const auto host = world.Host(how);
    StartScan(*host, 0);
    Do(*host, "ask 1");
    RunRounds([&](int round, Dice& dice) {
        const int settings = round + 1;
        Do(*host, "settings " + std::to_string(settings));
        EXPECT_TRUE(SteadySetsAfter(*host, Now()));
        dice.Pause(kLongPauseMs);
        const pid_t service = world.RunningService();
        const std::size_t scripts = world.ScriptRuns();
        const Gaps before = GapsOf(*host);
        const Moment begun = Now();
        harm(world, dice);
        const Moment harmed = Now();
        const auto first = host->WaitFor(begun, [&](const Event& event) {
            return event.kind == "debug" && event.word == "ReConnect ConnectInner ret=1";
        });
        EXPECT_TRUE(first);
        const auto recovered = SteadySetsAfter(*host, first ? first->time : begun);
        ExpectRestored(world, service, settings);
        // Each attempt runs both scripts. On a busy machine the first one may fail.
        EXPECT_EQ(world.ScriptRuns(), scripts + 2 * Reconnections(*host, begun));
        const Gaps after = GapsOf(*host);
        EXPECT_EQ(after.reconnections, before.reconnections + 1);
        EXPECT_GE(after.milliseconds, before.milliseconds + kWatchdogMs);
        return Recovery{harmed, recovered};
    });
    Do(*host, "ask 0");
    ExpectCalls(*host, {STATUS_SUCCESS, STATUS_FAILED, STATUS_NOT_CONNECTED}, kReconnectMs);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    world.End(*host);
}

TEST(ServiceMode, ServiceKilledInAScan) {
    RunHarmfulRounds("", [](HostWorld& world, Dice&) { world.KillService(); });
}

TEST(ServiceMode, ServiceKilledInAScanOfAHostWithoutAnEventLoop) {
    RunHarmfulRounds("idle", [](HostWorld& world, Dice&) { world.KillService(); });
}

TEST(ServiceMode, ServiceStopped) {
    RunHarmfulRounds("", [](HostWorld& world, Dice&) { world.StopService(); });
}

TEST(ServiceMode, HubKilledAndThenTheService) {
    RunHarmfulRounds("", [](HostWorld& world, Dice& dice) {
        const pid_t hub = world.Hub();
        world.KillHub();
        dice.Pause(kLongPauseMs);
        world.KillService();
        EXPECT_TRUE(support::WaitUntil([&] { return world.Hub() > 0 && world.Hub() != hub; }));
    });
}

TEST(ServiceMode, ReconnectionsThatTheHeadRefusesAreRetried) {
    HostWorld world({{"MaxReconnectCount", 2}, {"ReconnectPeriod", 2}});
    const std::string head = (world.Folders().Path() / "refusing.toml").string();
    const auto write = [&](const std::string& fault) {
        std::ofstream(head) << "[replay]\nfolder = \"" << world.HeadFolder() << "\"\n" << fault;
    };
    write("");
    world.SetEnvironment("KORVEX_VIRTUAL_HEAD", head);
    const auto host = world.Host();
    StartScan(*host, 7);
    Moment refused = Now();
    write(
        "[[fault]]\nwhat = \"fail\"\ncall = \"zr3DOpenOrCloseStrobeFlicker\"\nat_ms = 0\n"
        "times = 1000\n");
    const pid_t service = world.RunningService();
    world.KillService();
    for (int attempt = 0; attempt < 3; ++attempt) {
        const auto failed = host->WaitFor(refused, [](const Event& event) {
            return event.kind == "debug" && event.word == "ReConnect ConnectInner ret=0";
        });
        ASSERT_TRUE(failed) << attempt;
        refused = failed->time;
    }
    EXPECT_TRUE(host->WaitFor(0, [](const Event& event) {
        return event.kind == "debug" && event.word == "Start ReStartDevice";
    }));
    write("");
    EXPECT_TRUE(SteadySetsAfter(*host, refused));
    ExpectRestored(world, service, 7);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    ExpectCalls(*host, {STATUS_SUCCESS}, kReconnectMs);
    world.End(*host);
}

TEST(ServiceMode, HostKilledAndStartedAgain) {
    HostWorld world;
    auto host = world.Host();
    StartScan(*host, 3);
    RunRounds([&](int round, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const pid_t service = world.RunningService();
        const pid_t hub = world.Hub();
        host->Kill();
        dice.Pause(kLongPauseMs);
        const Moment started = Now();
        host = world.Host();
        EXPECT_NE(world.RunningService(), service);
        EXPECT_NE(world.Hub(), hub);
        StartScan(*host, round);
        return Recovery{started, SteadySetsAfter(*host, started)};
    });
    ExpectCalls(*host, {STATUS_SUCCESS}, kStartMs);
    world.End(*host);
}

TEST(ServiceMode, WithoutCamerasEveryCallIsAnswered) {
    HostWorld world;
    world.SetEnvironment("KORVEX_VIRTUAL_HEAD", "");
    const auto host = world.Host();
    EXPECT_EQ(StatusOf(*host, "connect"), STATUS_CAMERA);
    for (const Event& call : Do(*host, "every")) {
        EXPECT_TRUE(call.number == STATUS_NOT_CONNECTED || call.number == STATUS_NOT_SUPPORTED)
            << call.word << " gave " << call.number;
    }
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_NOT_CONNECTED);
    EXPECT_EQ(StatusOf(*host, "switch 1"), STATUS_NOT_SUPPORTED);
    ExpectCalls(*host, {STATUS_SUCCESS, STATUS_CAMERA, STATUS_NOT_CONNECTED, STATUS_NOT_SUPPORTED},
                kStartMs);
    world.End(*host);
}

TEST(ServiceMode, WhileAnotherClientHasTheDeviceEveryCallIsRefused) {
    HostWorld world;
    const auto host = world.Host();
    ApplicationProcess owner(world.Folders(), "scan");
    ASSERT_TRUE(SteadySetsAfter(owner, 0));
    EXPECT_EQ(StatusOf(*host, "connect"), STATUS_FAILED);
    for (const Event& call : Do(*host, "every")) {
        EXPECT_TRUE(call.number == STATUS_NOT_CONNECTED || call.number == STATUS_NOT_SUPPORTED)
            << call.word << " gave " << call.number;
    }
    EXPECT_TRUE(SteadySetsAfter(owner, Now())) << "the scan of the owner goes on";
    owner.End();
    EXPECT_TRUE(support::WaitUntil([&] { return StatusOf(*host, "connect") == STATUS_SUCCESS; }));
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    ExpectCalls(*host, {STATUS_SUCCESS, STATUS_FAILED, STATUS_NOT_CONNECTED, STATUS_NOT_SUPPORTED},
                kStartMs);
    world.End(*host);
}

TEST(ServiceMode, WithoutTheServiceEveryCallIsRefusedUntilOneIsThere) {
    HostWorld world;
    const auto host = world.Host();
    ASSERT_EQ(StatusOf(*host, "connect"), STATUS_SUCCESS);
    world.KillService();
    const Moment killed = Now();
    for (const Event& call : Do(*host, "every")) {
        const int expected =
            call.word == "EnableHeartbeat" || call.word == "GetScanStatistics" ? STATUS_SUCCESS
            : call.word == "SnapColorImageForIR" ? STATUS_NOT_CONNECTED
            : call.number == STATUS_SYNCHRONISM_TYPE || call.number == STATUS_NOT_SUPPORTED
                ? call.number
                : STATUS_FAILED;
        EXPECT_EQ(call.number, expected) << call.word;
    }
    EXPECT_EQ(StatusOf(*host, "connect"), STATUS_FAILED);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_FAILED);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_NOT_CONNECTED) << "the handle is null";
    world.StartServiceByHand();
    EXPECT_TRUE(support::WaitUntil([&] { return StatusOf(*host, "connect") == STATUS_SUCCESS; }));
    EXPECT_EQ(Reconnections(*host, killed), 0U) << "only missing images start a reconnection";
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    ExpectCalls(*host,
                {STATUS_SUCCESS, STATUS_FAILED, STATUS_SYNCHRONISM_TYPE, STATUS_NOT_CONNECTED,
                 STATUS_NOT_SUPPORTED},
                kStartMs);
    world.End(*host);
}

/// A scan is stopped in a way, at random moments, and no reconnection follows.
void RunStops(const std::string& stop, const std::vector<std::string>& restart) {
    HostWorld world;
    const auto host = world.Host();
    StartScan(*host, 5);
    RunRounds([&](int, Dice& dice) {
        constexpr int kStops = 4;
        Moment stopped = 0;
        for (int i = 0; i < kStops; ++i) {
            // Most often a few milliseconds from a notice.
            EXPECT_TRUE(host->WaitFor("set", Now()));
            dice.Pause(10);
            EXPECT_EQ(StatusOf(*host, stop), STATUS_SUCCESS);
            stopped = Now();
            // The watchdog would find that there are no images. Its period is longer than a busy
            // machine lets the sets of a scan pause, since that rightly starts a reconnection.
            constexpr Moment kMoreThanAPeriod = 1'200'000'000;
            EXPECT_TRUE(support::WaitUntil([&] { return Now() > stopped + kMoreThanAPeriod; }));
            const Moment restarted = Now();
            for (const std::string& command : restart) {
                EXPECT_EQ(StatusOf(*host, command), STATUS_SUCCESS) << command;
            }
            // While the trigger is on, a busy machine may let the sets pause.
            for (const Event& event : host->Events()) {
                EXPECT_FALSE(event.kind == "debug" && event.time > stopped &&
                             event.time < restarted && event.word.starts_with("ScanCallBack"))
                    << i;
            }
        }
        return Recovery{stopped, SteadySetsAfter(*host, stopped)};
    });
    ExpectCalls(*host, {STATUS_SUCCESS}, kStartMs);
    world.End(*host);
}

TEST(ServiceMode, TriggerDisabledAtANotice) {
    RunStops("trigger 4 0", {"trigger 4 1"});
}

TEST(ServiceMode, DisconnectedAtANotice) {
    RunStops("disconnect", {"connect", "status 1", "sets 1", "settings 5", "trigger 4 1"});
}

TEST(ServiceMode, ScanCallbackRemovedAtANotice) {
    RunStops("sets 0", {"sets 1"});
}

TEST(ServiceMode, SwitchedToDirectModeAndBackWithConnectionsOpen) {
    HostWorld world;
    const auto host = world.Host();
    StartScan(*host, 2);
    const pid_t service = world.RunningService();
    RunRounds([&](int, Dice& dice) {
        EXPECT_EQ(StatusOf(*host, "switch 0"), STATUS_SUCCESS);
        // The head of this process: each has its own virtual head.
        Do(*host, "park");
        EXPECT_EQ(StatusOf(*host, "connect"), STATUS_SUCCESS);
        EXPECT_EQ(StatusOf(*host, "status 1"), STATUS_SUCCESS);
        dice.Pause(kLongPauseMs);
        const Moment returned = Now();
        EXPECT_EQ(StatusOf(*host, "switch 1"), STATUS_NOT_SUPPORTED) << "the client exists";
        Do(*host, "park");
        EXPECT_EQ(StatusOf(*host, "trigger 4 1"), STATUS_SUCCESS);
        const auto recovered = SteadySetsAfter(*host, returned);
        EXPECT_EQ(StatusOf(*host, "switch 0"), STATUS_SUCCESS);
        Do(*host, "park");
        EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS) << "of direct mode";
        EXPECT_EQ(StatusOf(*host, "switch 1"), STATUS_NOT_SUPPORTED);
        Do(*host, "park");
        return Recovery{returned, recovered};
    });
    EXPECT_EQ(world.RunningService(), service) << "the scan went on all the time";
    EXPECT_EQ(Reconnections(*host, 0), 0U);
    EXPECT_EQ(StatusOf(*host, "disconnect"), STATUS_SUCCESS);
    ExpectCalls(*host, {STATUS_SUCCESS, STATUS_NOT_SUPPORTED}, kStartMs);
    world.End(*host);
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
