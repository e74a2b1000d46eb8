#include <gmock/gmock.h>

#include <atomic>
#include <set>

#include "device_service/ServiceSession.h"
#include "device_service/Sets.h"
#include "platform/include/ImageSetNotice.h"
#include "platform/os/Event.h"
#include "support/Deadline.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using testing::Contains;
using testing::Key;

/// A figure of direct mode in a notice.
std::uint64_t FigureOf(const Notice& notice, const std::string& name) {
    const auto& figures = notice::kDirectModeFigures;
    EXPECT_EQ(static_cast<std::size_t>(notice.statistics.size()), figures.size());
    for (std::size_t i = 0; i < figures.size(); ++i) {
        if (figures[i].name == name) {
            return notice.statistics.value(static_cast<int>(i)).toULongLong();
        }
    }
    ADD_FAILURE() << "no figure " << name;
    return 0;
}

class SetTest : public ServiceSession {
protected:
    /// Connects a client and lets it have the sets.
    static void Connect(ServiceClient& client) {
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
    }
    static void Trigger(ServiceClient& client, CAMERA_TRIGGER_MODE mode, int periodMs) {
        ASSERT_EQ(client->setVideoTriggerPeriod(client.Id(), periodMs), STATUS_SUCCESS);
        ASSERT_EQ(client->enableVideoTrigger(client.Id(), mode, true), STATUS_SUCCESS);
    }
    static void TriggerOff(ServiceClient& client) {
        ASSERT_EQ(client->enableVideoTrigger(client.Id(), TRIGGER_PATTERN, false), STATUS_SUCCESS);
    }
    /// Stops the sets: afterwards all notices have arrived.
    static void StopSets(ServiceClient& client) {
        ASSERT_EQ(client->setScanCallBackFunction(client.Id(), false), STATUS_SUCCESS);
    }
    /// Waits until the head's frames have become sets.
    bool WaitForDelivery() {
        return support::WaitUntil([&] {
            const auto counts = TheHead().Counts();
            return counts.color.fetched == counts.color.handed &&
                   counts.mono.fetched == counts.mono.handed;
        });
    }

    /// Waits for the notice of the last set of a scan. The service has a camera instance of its
    /// own, which may be behind the one that the head counts.
    static bool WaitForSet(const ServiceClient& client, std::uint64_t number) {
        return support::WaitUntil([&] { return client.Notices().back().number == number; });
    }
    bool ScanWithoutLoss(int periodMs);
    /// What the service says of a loss; 0 while it says nothing.
    static std::uint64_t LossOf(const QString& place) {
        const auto state = State();
        const auto losses = state ? state->losses : decltype(state->losses){};
        const auto loss = std::find_if(losses.begin(), losses.end(),
                                       [&place](const auto& one) { return one.first == place; });
        return loss == losses.end() ? 0 : loss->second;
    }

    SetReader m_reader;
};

/// Scans at a rate and checks each set that arrives. False if this machine lost one on the way:
/// then it was counted.
bool SetTest::ScanWithoutLoss(int periodMs) {
    Request();
    const DirectWitness witness;
    std::mutex mutex;
    std::vector<std::optional<SetPixels>> read;
    ServiceClient client([&](const Notice& notice) {
        const auto set = m_reader.Read(notice);
        const std::lock_guard lock(mutex);
        read.push_back(set);
    });
    Connect(client);
    EXPECT_EQ(client->enableBlueLaser(client.Id(), LASER_WORK_MODE_0, true), STATUS_SUCCESS);
    Trigger(client, TRIGGER_LASER_LINES_COLOR, periodMs);
    constexpr std::size_t kSets = 200;
    EXPECT_TRUE(client.WaitForNotices(kSets));
    TriggerOff(client);
    EXPECT_TRUE(WaitForDelivery());
    StopSets(client);
    const auto notices = client.Notices();
    const std::uint64_t triggers = TheHead().Counts().triggers;
    EXPECT_TRUE(witness.WaitForSets(triggers));
    const auto expected = witness.Sets();
    std::set<QString> names;
    std::size_t complete = 0;
    const std::lock_guard lock(mutex);
    EXPECT_EQ(read.size(), notices.size());
    for (std::size_t i = 0; i < notices.size(); ++i) {
        EXPECT_EQ(notices[i].kind, "ColorImage");
        EXPECT_EQ(notices[i].segments.size(), 3);
        EXPECT_EQ(notices[i].factor, 1);
        EXPECT_EQ(notices[i].device, client.Id());
        names.insert(notices[i].segments.begin(), notices[i].segments.end());
        if (read[i]) {
            ++complete;
            EXPECT_EQ(*read[i], expected.at(notices[i].number - 1)) << i;
            EXPECT_EQ(read[i]->key, (notices[i].number - 1) % 256) << i;
        }
    }
    EXPECT_EQ(names.size(), 3 * notices.size()) << "a name was used twice";
    const Notice& last = notices.back();
    EXPECT_EQ(last.number, notices.size() + last.notWritten + last.noticesNotSent);
    return complete == triggers;
}

TEST_F(SetTest, AHundredASecondArriveCompleteWithTheirPixels) {
    // Half as many on a machine that is busy or runs a sanitizer, and so on.
    int periodMs = 10;
    constexpr int kSlowest = 160;
    while (!ScanWithoutLoss(periodMs) && !HasFailure() && periodMs < kSlowest) {
        periodMs *= 2;
    }
    RecordProperty("period_ms", periodMs);
    EXPECT_LT(periodMs, kSlowest);
}

TEST_F(SetTest, AGreySetHasTwoImages) {
    Request();
    const DirectWitness witness;
    ServiceClient client;
    Connect(client);
    Trigger(client, TRIGGER_PATTERN, 20);
    ASSERT_TRUE(client.WaitForNotices(3));
    TriggerOff(client);
    const Notice notice = client.Notices().back();
    EXPECT_EQ(notice.kind, "GrayImage");
    EXPECT_EQ(notice.segments.size(), 2);
    const auto set = m_reader.Read(notice);
    ASSERT_TRUE(set.has_value());
    ASSERT_TRUE(witness.WaitForSets(notice.number));
    EXPECT_EQ(*set, witness.Sets()[notice.number - 1]);
}

TEST_F(SetTest, ASlowReaderGetsWholeSetsOrNoneAndEveryTriggerIsAccountedFor) {
    virtual_head::HeadDescription description = Head();
    description.faults = {
        {.order = {.kind = virtual_head::FaultKind::LoseBoth, .times = 3}, .atTrigger = 40}};
    Request(description);
    const DirectWitness witness;
    ServiceClient client;
    Connect(client);
    Trigger(client, TRIGGER_LASER_LINES_COLOR, 30);
    // Reads nothing until many sets have come, then all of them, the oldest first.
    std::size_t begun = 0;
    std::uint64_t overwritten = 0;
    std::map<std::uint64_t, SetPixels> read;
    for (int round = 0; round < 4; ++round) {
        ASSERT_TRUE(client.WaitForNotices(begun + 30));
        const auto notices = client.Notices();
        for (; begun < notices.size(); ++begun) {
            if (const auto set = m_reader.Read(notices[begun])) {
                read[notices[begun].number] = *set;
            } else {
                ++overwritten;
            }
        }
    }
    TriggerOff(client);
    ASSERT_TRUE(WaitForSet(client, TheHead().Counts().triggers - 3));
    StopSets(client);
    const auto notices = client.Notices();
    for (; begun < notices.size(); ++begun) {
        if (const auto set = m_reader.Read(notices[begun])) {
            read[notices[begun].number] = *set;
        } else {
            ++overwritten;
        }
    }
    EXPECT_GT(overwritten, 0U);
    ASSERT_TRUE(witness.WaitForSets(notices.back().number));
    const auto expected = witness.Sets();
    for (const auto& [number, set] : read) {
        EXPECT_EQ(set, expected[number - 1]) << number;
    }
    const Notice& last = notices.back();
    EXPECT_EQ(last.number, read.size() + overwritten + last.notWritten + last.noticesNotSent);
    EXPECT_EQ(last.number, notices.size() + last.notWritten + last.noticesNotSent);
    EXPECT_EQ(FigureOf(last, "setsDelivered") + 1, last.number) << "this set counts later";
    EXPECT_EQ(FigureOf(last, "missingKeys"), 3U);
    EXPECT_EQ(TheHead().Counts().triggers, last.number + 3);
}

TEST_F(SetTest, ASetWithoutAFreePlaceIsCounted) {
    Request();
    ServiceClient client;
    Connect(client);
    Trigger(client, TRIGGER_LASER_LINES_COLOR, 10);
    // Holds each segment that a notice names, until there is no room for a set.
    ASSERT_TRUE(client.WaitForNotices(1));
    ASSERT_TRUE(support::WaitUntil([&] {
        m_reader.Hold(client.Notices().back());
        return LossOf("setsNotWritten") > 5;
    }));
    const std::size_t before = client.Notices().size();
    m_reader.LetGo();
    ASSERT_TRUE(client.WaitForNotices(before + 5));
    TriggerOff(client);
    ASSERT_TRUE(WaitForSet(client, TheHead().Counts().triggers));
    StopSets(client);
    const auto notices = client.Notices();
    const Notice& last = notices.back();
    EXPECT_GT(last.notWritten, 5U);
    EXPECT_EQ(last.number, notices.size() + last.notWritten);
    EXPECT_TRUE(m_reader.Read(last).has_value());
}

TEST_F(SetTest, NoticesThatTheClientDoesNotTakeAreCountedAndNothingWaitsForIt) {
    Request();
    os::Event entered;
    os::Event go;
    ServiceClient client([&](const Notice&) {
        entered.Set();
        go.Wait();
    });
    Connect(client);
    Trigger(client, TRIGGER_PATTERN, 10);  // a starved machine loses frames of shorter periods
    ASSERT_EQ(entered.Wait(kDeadline), os::WaitResult::Signalled);
    const bool counted = support::WaitUntil([] { return LossOf("noticesNotSent") > 20; });
    go.Set();
    ASSERT_TRUE(counted);
    // The client takes notices again.
    ASSERT_TRUE(support::WaitUntil([&] { return client.Notices().back().noticesNotSent > 20; }));
    TriggerOff(client);
    // Without colour the newest set waits for the next trigger.
    ASSERT_TRUE(WaitForSet(client, TheHead().Counts().triggers - 1));
    StopSets(client);
    const auto notices = client.Notices();
    const Notice& last = notices.back();
    EXPECT_GT(last.noticesNotSent, 20U);
    EXPECT_EQ(last.number, notices.size() + last.noticesNotSent + last.notWritten);
    EXPECT_EQ(FigureOf(last, "missingKeys"), 0U) << "direct mode waited for the client";
}

TEST_F(SetTest, AStopIsAnsweredAfterAllSetsBeforeIt) {
    Request();
    ServiceClient client;
    Connect(client);
    Trigger(client, TRIGGER_PATTERN, 2);
    for (std::size_t round = 1; round <= 20; ++round) {
        ASSERT_TRUE(client.WaitForNotices(client.Notices().size() + 3));
        StopSets(client);
        const auto stopped = client.Notices().size();
        // The next answer comes after anything that was sent before.
        int brightness = 0;
        ASSERT_EQ(client->getProjectorBrightness(client.Id(), brightness), STATUS_SUCCESS);
        ASSERT_EQ(client.Notices().size(), stopped) << "a notice after the stop";
        ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
    }
    // Sets of a pause go nowhere, all others arrive.
    StopSets(client);
    EXPECT_TRUE(support::WaitUntil([] { return LossOf("setsWithoutCallback") > 0; }));
    ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
    ASSERT_TRUE(client.WaitForNotices(client.Notices().size() + 1));
    TriggerOff(client);
    StopSets(client);
    const auto notices = client.Notices();
    const Notice& last = notices.back();
    EXPECT_EQ(last.number, notices.size() + last.notWritten + last.noticesNotSent);
    EXPECT_GT(FigureOf(last, "setsWithoutCallback"), 0U);
}

TEST_F(SetTest, AfterTheTriggerNoticesSayThatNoMoreFollow) {
    Request();
    ServiceClient client;
    Connect(client);
    for (int round = 0; round < 3; ++round) {
        const std::size_t before = client.Notices().size();
        Trigger(client, TRIGGER_LASER_LINES_COLOR, 5);
        ASSERT_TRUE(client.WaitForNotices(before + 5));
        ASSERT_TRUE(TheHead().GetFaults().Fail("zr3DSetVideoTrigleMode", 1));
        EXPECT_EQ(client->enableVideoTrigger(client.Id(), TRIGGER_PATTERN, false), STATUS_FAILED);
        const std::size_t refused = client.Notices().size();
        ASSERT_TRUE(client.WaitForNotices(refused + 5));
        // The frames of some triggers come only when the trigger is switched off.
        ASSERT_TRUE(TheHead().GetFaults().Order(
            {.kind = virtual_head::FaultKind::Delay, .byTriggers = 10000}));
        ASSERT_TRUE(support::WaitUntil([&] { return TheHead().Counts().mono.heldBack >= 10; }));
        const std::size_t stopped = client.Notices().size();
        TriggerOff(client);
        ASSERT_TRUE(WaitForSet(client, TheHead().Counts().triggers));
        const auto notices = client.Notices();
        EXPECT_GE(notices.size(), stopped + 5);
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_TRUE(notices[before + i].moreFollow);
            EXPECT_TRUE(notices[refused + i].moreFollow);
        }
        // Of the sets that the service was just delivering, some may come after the count above.
        for (std::size_t i = notices.size() - 5; i < notices.size(); ++i) {
            EXPECT_FALSE(notices[i].moreFollow) << i;
        }
    }
}

TEST_F(SetTest, NoSetsComeWithoutBeingAskedForOrAfterADisconnect) {
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    Trigger(client, TRIGGER_LASER_LINES_COLOR, 5);
    ASSERT_TRUE(support::WaitUntil([&] { return TheHead().Counts().mono.fetched > 5; }));
    EXPECT_EQ(client.Notices().size(), 0U);
    ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
    ASSERT_TRUE(client.WaitForNotices(3));
    ASSERT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
    const auto before = client.Notices().size();
    int count = 0;
    ASSERT_EQ(client->getCameraCount("KV00", count), STATUS_SUCCESS);
    EXPECT_EQ(client.Notices().size(), before);
}

TEST_F(SetTest, TheStateOfTheServiceTellsRateOwnerAndLosses) {
    Request();
    auto state = State();
    ASSERT_TRUE(state.has_value());
    EXPECT_EQ(state->version, "1.2.3");
    EXPECT_EQ(state->process, ::getpid());
    EXPECT_EQ(state->clientProcess, 0);
    EXPECT_EQ(state->deviceId, 0);
    EXPECT_EQ(state->deviceType, "");
    EXPECT_TRUE(state->losses.empty());
    ServiceClient client;
    Connect(client);
    Trigger(client, TRIGGER_LASER_LINES_COLOR, 20);
    ASSERT_TRUE(support::WaitUntil([&] {
        state = State();
        return state && state->setsPerSecond >= 45 && state->setsPerSecond <= 55;
    })) << state->setsPerSecond;
    EXPECT_EQ(state->clientProcess, ::getpid());
    EXPECT_EQ(state->deviceId, client.Id());
    EXPECT_EQ(state->deviceType, "KV00");
    const std::map<QString, quint64> losses(state->losses.begin(), state->losses.end());
    EXPECT_THAT(losses, Contains(Key("missingKeys")));
    EXPECT_THAT(losses, Contains(Key("setsNotWritten")));
    EXPECT_THAT(losses, Contains(Key("noticesNotSent")));
    const auto uptime = state->uptimeMs;
    TriggerOff(client);
    ASSERT_TRUE(support::WaitUntil([&] {
        state = State();
        return state && state->setsPerSecond == 0;
    }));
    EXPECT_GT(state->uptimeMs, uptime);
}

}  // namespace
}  // namespace Korvex3Sync::tests
