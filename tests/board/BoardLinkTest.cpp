#include "platform/board/BoardLink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "board/ScriptedTransport.h"
#include "platform/board/BoardCalls.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;

constexpr std::chrono::seconds kPatience{60};

CommandMessage MessageOf(const Report& report) {
    return std::get<CommandMessage>(DecodeCommand(report));
}

Report GoodReply(const Report& sent, std::int32_t value) {
    const CommandMessage message = MessageOf(sent);
    return EncodeReply({message.command, message.sequence, Status::Ok,
                        ValuesPayload(std::vector<std::int32_t>{value})});
}

// Runs two callers at the same time.
void RunTwo(const std::function<void(int)>& call, int first, int second) {
    std::atomic<int> ready{0};
    const auto begin = [&](int argument) {
        ++ready;
        while (ready < 2) {
            std::this_thread::yield();
        }
        call(argument);
    };
    std::thread one(begin, first);
    std::thread two(begin, second);
    one.join();
    two.join();
}

// A link over a board that answers as the script says.
struct ScriptedBoard {
    explicit ScriptedBoard(ScriptedTransport::Script script) {
        auto made = std::make_unique<ScriptedTransport>(std::move(script));
        transport = made.get();
        link = std::make_unique<BoardLink>(std::move(made));
    }

    bool AskPeriod(int& period) { return Query(*link, Command::QueryTriggerPeriod, {}, {&period}); }

    ScriptedTransport* transport;
    std::unique_ptr<BoardLink> link;
};

// Where no reply comes the limit has to pass, and passes faster; where one comes, a busy machine
// has more time for it.
constexpr double kShortLimit = 0.2;
constexpr double kLongLimit = 100;

class BadReply : public testing::TestWithParam<
                     std::pair<const char*, std::function<std::vector<ReceivedBytes>(Report)>>> {};

TEST_P(BadReply, GivesFalseAndLeavesTheOutputAlone) {
    const os::ScopedTimeScale scale{kShortLimit};
    ScriptedBoard board([](const Report& sent) { return GetParam().second(GoodReply(sent, 99)); });
    int period = -7;
    EXPECT_FALSE(board.AskPeriod(period));
    EXPECT_EQ(period, -7);
    EXPECT_EQ(board.transport->Sent().size(), 1U) << "nothing is sent twice";
}

TEST_P(BadReply, IsSkippedWhenTheGoodOneFollows) {
    const os::ScopedTimeScale scale{kLongLimit};
    ScriptedBoard board([](const Report& sent) {
        auto replies = GetParam().second(GoodReply(sent, 99));
        replies.push_back(Received(GoodReply(sent, 12)));
        return replies;
    });
    int period = -7;
    EXPECT_TRUE(board.AskPeriod(period));
    EXPECT_EQ(period, 12);
}

ReceivedBytes With(Report report, std::size_t place, std::uint8_t change) {
    report[place] = static_cast<std::uint8_t>(report[place] ^ change);
    return Received(report);
}

ReceivedBytes Again(const Report& good, Command command, std::uint16_t sequenceStep) {
    const auto sequence = static_cast<std::uint16_t>(good[6] | good[7] << 8);
    return Received(EncodeReply({command, static_cast<std::uint16_t>(sequence + sequenceStep),
                                 Status::Ok, ValuesPayload(std::vector<std::int32_t>{99})}));
}

INSTANTIATE_TEST_SUITE_P(
    Every, BadReply,
    testing::Values(
        std::pair{"None", [](Report) { return std::vector<ReceivedBytes>{}; }},
        std::pair{"Empty", [](Report) { return std::vector{ReceivedBytes{}}; }},
        std::pair{"Short", [](Report good) { return std::vector{Received(good, 63)}; }},
        std::pair{"Zeros", [](Report) { return std::vector{Received(Report{})}; }},
        std::pair{"Garbage",
                  [](Report) {
                      Report report;
                      report.fill(0xA5);
                      return std::vector{Received(report)};
                  }},
        std::pair{"WrongChecksum", [](Report good) { return std::vector{With(good, 60, 0x01)}; }},
        std::pair{"ChangedPayload", [](Report good) { return std::vector{With(good, 9, 0x01)}; }},
        std::pair{"Echo",
                  [](Report good) {
                      const auto sequence = static_cast<std::uint16_t>(good[6] | good[7] << 8);
                      return std::vector{
                          Received(EncodeCommand({Command::QueryTriggerPeriod, sequence, {}}))};
                  }},
        std::pair{"EarlierSequence",
                  [](Report good) {
                      return std::vector{Again(good, Command::QueryTriggerPeriod, 0xFFFF)};
                  }},
        std::pair{
            "LaterSequence",
            [](Report good) { return std::vector{Again(good, Command::QueryTriggerPeriod, 1)}; }},
        std::pair{"AnotherCommand",
                  [](Report good) {
                      return std::vector{Again(good, Command::QueryProjectorBrightness, 0)};
                  }},
        std::pair{"Many",
                  [](Report good) { return std::vector<ReceivedBytes>(200, Received(good, 1)); }}),
    [](const auto& each) { return each.param.first; });

TEST(BoardLink, TakesAStatusOtherThanOkAsAFailureAtOnce) {
    for (const Status status : {Status::Failed, Status::BadValue, Status::BadPayload,
                                Status::UnknownCommand, static_cast<Status>(99)}) {
        ScriptedBoard board([status](const Report& sent) {
            const CommandMessage message = MessageOf(sent);
            return std::vector{
                Received(EncodeReply({message.command, message.sequence, status,
                                      std::get<CommandMessage>(DecodeCommand(sent)).payload}))};
        });
        int period = -7;
        EXPECT_FALSE(board.AskPeriod(period));
        EXPECT_EQ(period, -7);
    }
}

TEST(BoardLink, SkipsTheLateReplyToACommandThatFoundNoneInTime) {
    std::vector<Report> held;
    ScriptedBoard board([&held](const Report& sent) {
        std::vector<ReceivedBytes> replies;
        if (held.empty()) {
            held.push_back(GoodReply(sent, 1));
        } else {
            replies = {Received(held.front()), Received(GoodReply(sent, 2))};
        }
        return replies;
    });
    int period = -7;
    {
        const os::ScopedTimeScale scale{kShortLimit};
        EXPECT_FALSE(board.AskPeriod(period));
    }
    const os::ScopedTimeScale scale{kLongLimit};
    EXPECT_TRUE(board.AskPeriod(period));
    EXPECT_EQ(period, 2);
}

TEST(BoardLink, FailsWhenTheBoardTakesNoReport) {
    ScriptedBoard board([](const Report&) { return std::nullopt; });
    int period = -7;
    EXPECT_FALSE(board.AskPeriod(period));
    EXPECT_EQ(period, -7);
}

TEST(BoardLink, StopsAfterTheFirstReportThatFails) {
    int count = 0;
    ScriptedBoard board([&count](const Report& sent) {
        const CommandMessage message = MessageOf(sent);
        return std::vector{Received(EncodeReply(
            {message.command, message.sequence, ++count < 3 ? Status::Ok : Status::Failed, {}}))};
    });
    const std::string data(256, 'x');
    EXPECT_FALSE(WriteUserPage(*board.link, 1, data.data(), 256));
    EXPECT_EQ(board.transport->Sent().size(), 3U);
}

TEST(BoardLink, GivesEachOfTwoCallersItsOwnReply) {
    // The board answers a value that only the right caller can expect.
    ScriptedBoard board([](const Report& sent) {
        const CommandMessage message = MessageOf(sent);
        const int asked = message.payload.ValueAt(0);
        return std::vector{
            Received(EncodeReply({message.command, message.sequence, Status::Ok,
                                  ValuesPayload(std::vector<std::int32_t>{1000 + asked})}))};
    });
    std::atomic<int> wrong{0};
    const auto call = [&](int withTexture) {
        for (int round = 0; round < 500; ++round) {
            int time = 0;
            if (!Query(*board.link, Command::QueryLedWorkTime, {withTexture}, {&time}) ||
                time != 1000 + withTexture) {
                ++wrong;
            }
        }
    };
    RunTwo(call, 0, 1);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(board.transport->Sent().size(), 1000U);
}

TEST(BoardLink, KeepsTheReportsOfOneCallTogether) {
    ScriptedBoard board([](const Report& sent) {
        const CommandMessage message = MessageOf(sent);
        return std::vector{
            Received(EncodeReply({message.command, message.sequence, Status::Ok, {}}))};
    });
    const std::string data(256, 'x');
    const auto write = [&](int page) {
        for (int round = 0; round < 100; ++round) {
            EXPECT_TRUE(WriteUserPage(*board.link, page, data.data(), 256));
        }
    };
    RunTwo(write, 1, 2);
    const auto sent = board.transport->Sent();
    ASSERT_EQ(sent.size(), 1600U);
    for (std::size_t place = 0; place < sent.size(); ++place) {
        const Payload payload = MessageOf(sent[place]).payload;
        EXPECT_EQ(payload.ValueAt(2), static_cast<int>(place % 8) * 32);
        EXPECT_EQ(payload.ValueAt(0), MessageOf(sent[place - place % 8]).payload.ValueAt(0));
    }
}

TEST(BoardLink, CloseEndsACallThatWaitsForItsReply) {
    const os::ScopedTimeScale scale{kLongLimit};
    ScriptedBoard board([](const Report&) { return std::vector<ReceivedBytes>{}; });
    os::Event ended;
    std::thread caller([&] {
        int period = 0;
        EXPECT_FALSE(board.AskPeriod(period));
        ended.Set();
    });
    EXPECT_TRUE(board.transport->WaitForReceiver(kPatience));
    EXPECT_TRUE(board.link->Close());
    EXPECT_EQ(ended.Wait(kPatience), os::WaitResult::Signalled);
    caller.join();
    int period = 0;
    EXPECT_FALSE(board.AskPeriod(period));
    EXPECT_EQ(board.transport->Sent().size(), 1U) << "nothing is sent after the close";
}

TEST(BoardLink, ClosesItsTransportAtItsEnd) {
    bool closed = false;
    {
        auto transport = std::make_unique<ScriptedTransport>(
            [](const Report&) { return std::vector<ReceivedBytes>{}; });
        transport->OnClose([&closed] { closed = true; });
        const BoardLink link(std::move(transport));
    }
    EXPECT_TRUE(closed);
}

TEST(BoardLink, RefusesUserDataThatNoPageHolds) {
    ScriptedBoard board([](const Report&) { return std::vector<ReceivedBytes>{}; });
    const std::string data(300, 'x');
    EXPECT_FALSE(WriteUserPage(*board.link, 0, data.data(), 257));
    EXPECT_FALSE(WriteUserPage(*board.link, 0, data.data(), -1));
    EXPECT_FALSE(WriteUserPage(*board.link, 0, nullptr, 1));
    EXPECT_TRUE(board.transport->Sent().empty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
