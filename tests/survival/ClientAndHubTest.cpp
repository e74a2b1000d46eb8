// What is left of a client and of the hub when they die, and what two clients get.

#include <gtest/gtest.h>

#include "survival/World.h"

namespace Korvex3Sync::tests::survival {

namespace {

/// The scan went on since a moment.
void ExpectUndisturbed(ApplicationProcess& application, Moment since) {
    EXPECT_TRUE(SteadySetsAfter(application, Now()));
    for (const Event& event : application.Events()) {
        EXPECT_FALSE(event.time > since && event.kind == "down");
    }
}

TEST(Survival, HubKilled) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const Moment killed = Now();
        world.KillHub();
        // A new client finds the service only through a hub, which the service starts.
        const auto other = world.Application("count");
        const auto found = other->WaitFor("counted", killed);
        EXPECT_TRUE(found) << "the service is not found";
        other->End();
        ExpectDocumentedCalls(*other);
        ExpectUndisturbed(*application, killed);
        return Recovery{killed, found ? std::optional(found->time) : std::nullopt};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, HubAndServiceKilled) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        const bool hubFirst = dice.From(0, 1) == 0;
        if (hubFirst) {
            world.KillHub();
            dice.Pause(kLongPauseMs / 10);
        }
        world.KillService();
        if (!hubFirst) {
            dice.Pause(kLongPauseMs);
            world.KillHub();
        }
        const Moment returned = world.StartService();
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, ClientKilled) {
    World world;
    auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        application->Kill();
        dice.Pause(kLongPauseMs / 10);
        ExpectDocumentedCalls(*application);
        const Moment returned = Now();
        application = world.Application("scan");
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

TEST(Survival, SecondClient) {
    World world;
    auto first = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*first, 0));
    RunRounds([&](int, Dice& dice) {
        const Moment started = Now();
        auto second = world.Application("scan");
        const auto refused = second->WaitFor(started, [](const Event& event) {
            return event.kind == "call" && event.word == "connectDevice";
        });
        EXPECT_TRUE(refused && refused->number == 0) << "the device has an owner";
        dice.Pause(kLongPauseMs);
        ExpectUndisturbed(*first, started);
        const Moment released = Now();
        if (dice.From(0, 1) == 0) {
            first->Kill();
        } else {
            first->End();
        }
        ExpectDocumentedCalls(*first);
        first = std::move(second);
        return Recovery{released, SteadySetsAfter(*first, released)};
    });
    ExpectDocumentedCalls(*first);
    first->End();
    world.End();
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
