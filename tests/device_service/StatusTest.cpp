#include <gmock/gmock.h>

#include "device_service/ServiceSession.h"
#include "support/Deadline.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;

class StatusTest : public ServiceSession {
protected:
    static void Start(ServiceClient& client) {
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        ASSERT_EQ(client->setStatusCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        ASSERT_TRUE(client.WaitForStatuses(1));
    }
    /// Of the board, since the journal was cleared.
    std::uint64_t Polls() {
        std::uint64_t count = 0;
        for (const auto& entry : TheHead().GetJournal().Entries()) {
            count += entry.call == "zr3DQueryCurrentStatus" ? entry.count : 0;
        }
        return count;
    }
};

TEST_F(StatusTest, HasTheShapeThatAClientExpects) {
    Request();
    ServiceClient client;
    Start(client);
    const QList<QVariant> list = client.Statuses().front().list;
    ASSERT_EQ(list.size(), 4);
    EXPECT_EQ(list[0].type(), QVariant::String);
    EXPECT_FALSE(list[1].isValid());
    ASSERT_EQ(list[2].type(), QVariant::String);
    ASSERT_EQ(list[3].type(), QVariant::Int);
    bool decimal = false;
    EXPECT_LE(list[2].toString().toUInt(&decimal), 255U);
    EXPECT_TRUE(decimal);
}

TEST_F(StatusTest, IsRepeatedBetweenThePolls) {
    Request();
    ServiceClient client;
    Start(client);
    // Each poll gives one status; what is above that is repeated.
    TheHead().GetJournal().Clear();
    const std::size_t before = client.Statuses().size();
    EXPECT_TRUE(support::WaitUntil(
        [&] { return client.Statuses().size() - before >= Polls() + std::size_t{10}; }));
}

TEST_F(StatusTest, OfALostBoardIs255) {
    Request();
    ServiceClient client;
    Start(client);
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = virtual_head::FaultKind::BoardVanish}));
    ASSERT_TRUE(support::WaitUntil([&] {
        const auto list = client.Statuses().back().list;
        return list[2].toString() == "255" && list[3].toInt() == 255;
    }));
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = virtual_head::FaultKind::BoardReturn}));
    ASSERT_EQ(client->reconnectDevice(client.Id()), STATUS_SUCCESS);
    ASSERT_TRUE(support::WaitUntil([&] {
        const auto list = client.Statuses().back().list;
        return list[2].toString() != "255" || list[3].toInt() != 255;
    }));
}

TEST_F(StatusTest, FallsSilentWhileTheBoardIsNotPolled) {
    Request();
    ServiceClient client;
    Start(client);
    // The poll hangs in the board, and with it everything that has to do with the board.
    ASSERT_TRUE(TheHead().GetFaults().Order(
        {.kind = virtual_head::FaultKind::Slow, .call = "CloseCamera", .extra = 2500ms}));
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(client->reconnectDevice(client.Id()), STATUS_SUCCESS);
    const auto ended = std::chrono::steady_clock::now();
    ASSERT_GT(ended - begun, 2500ms);
    std::chrono::steady_clock::duration longest{};
    const auto statuses = client.Statuses();
    auto before = begun;
    for (const StatusMessage& status : statuses) {
        if (status.time > begun) {
            longest = std::max(longest, status.time - before);
            before = status.time;
        }
    }
    longest = std::max(longest, ended - before);
    EXPECT_GT(longest, 800ms) << "a status was repeated without a poll";
    const std::size_t count = client.Statuses().size();
    EXPECT_TRUE(client.WaitForStatuses(count + 3));
}

TEST_F(StatusTest, EndsWithTheAnswerToAStop) {
    Request();
    ServiceClient client;
    Start(client);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(client->setStatusCallBackFunction(client.Id(), false), STATUS_SUCCESS);
        const std::size_t stopped = client.Statuses().size();
        int brightness = 0;
        const auto end = std::chrono::steady_clock::now() + 150ms;  // three repetitions
        while (std::chrono::steady_clock::now() < end) {
            ASSERT_EQ(client->getProjectorBrightness(client.Id(), brightness), STATUS_SUCCESS);
        }
        EXPECT_EQ(client.Statuses().size(), stopped);
        ASSERT_EQ(client->setStatusCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        ASSERT_TRUE(client.WaitForStatuses(stopped + 3));
    }
}

TEST_F(StatusTest, ContinuesWhenItIsStartedAgain) {
    Request();
    ServiceClient client;
    Start(client);
    ASSERT_TRUE(client.WaitForStatuses(5));
    // Direct mode gives no status for four polls; meanwhile only repeated ones come. A busy machine
    // may let the four polls pass first, but not every time.
    constexpr std::uint64_t kPollsWithoutStatus = 4;
    EXPECT_TRUE(support::WaitUntil([&] {
        EXPECT_EQ(client->setStatusCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        TheHead().GetJournal().Clear();
        EXPECT_TRUE(client.WaitForStatuses(client.Statuses().size() + 5));
        return Polls() < kPollsWithoutStatus;
    }));
}

}  // namespace
}  // namespace Korvex3Sync::tests
