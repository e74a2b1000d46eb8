#include "virtual_head/board/VirtualBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <thread>

#include "board/Samples.h"
#include "support/Seed.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using board::Command;
using board::CommandInfo;
using board::Payload;
using board::ReplyMessage;
using board::Report;
using board::Status;
using testing::ElementsAre;

struct Announced {
    BoardState state;
    bool modeWritten;
};

class VirtualBoardTest : public testing::Test {
protected:
    Journal m_journal;
    Faults m_faults;
    std::vector<Announced> m_announced;
    VirtualBoard m_board{HeadDescription{}, m_journal, m_faults,
                         [this](const BoardState& state, bool modeWritten) {
                             // A state of its own, so that the board's lock is seen to be free.
                             EXPECT_EQ(m_board.State().triggerMode, state.triggerMode);
                             m_announced.push_back({state, modeWritten});
                         }};

    ReplyMessage Execute(Command command, const Payload& payload) {
        const auto reply = m_board.Execute(board::EncodeCommand({command, ++m_sequence, payload}));
        EXPECT_TRUE(reply.has_value());
        const auto decoded = board::DecodeReply(*reply, command, m_sequence);
        EXPECT_TRUE(std::holds_alternative<ReplyMessage>(decoded));
        return std::get<ReplyMessage>(decoded);
    }
    Status Send(Command command, std::vector<std::int32_t> values) {
        return Execute(command, board::ValuesPayload(values)).status;
    }

private:
    std::uint16_t m_sequence = 0;
};

TEST_F(VirtualBoardTest, AnswersEveryCommandWithTheShapeOfItsReply) {
    for (const CommandInfo& info : board::AllCommands()) {
        Payload payload;
        if (info.command == Command::WriteUserMemory) {
            payload = board::ValuesPayload(std::vector<std::int32_t>{0, 0, 0});
        } else {
            payload = board::ValuesPayload(std::vector<std::int32_t>(info.request.values));
        }
        const ReplyMessage reply = Execute(info.command, payload);
        EXPECT_EQ(reply.status, Status::Ok) << info.function;
        EXPECT_TRUE(info.reply.Fits(reply.payload.Size())) << info.function;
    }
}

TEST_F(VirtualBoardTest, RefusesAPayloadOfAnotherShape) {
    for (const CommandInfo& info : board::AllCommands()) {
        Payload tooShort;
        for (std::size_t value = 1; value < info.request.values; ++value) {
            tooShort.PutValue(0);
        }
        if (info.request.values > 0) {
            EXPECT_EQ(Execute(info.command, tooShort).status, Status::BadPayload) << info.function;
        }
        Payload tooLong = SamplePayload(info.request);
        if (tooLong.PutBytes(std::vector<std::uint8_t>(1))) {
            EXPECT_EQ(Execute(info.command, tooLong).status, Status::BadPayload) << info.function;
        }
    }
    EXPECT_TRUE(m_journal.Texts().empty());
}

TEST_F(VirtualBoardTest, SaysThatACodeIsUnknown) {
    EXPECT_EQ(Send(static_cast<Command>(0x7F), {}), Status::UnknownCommand);
    EXPECT_EQ(Send(static_cast<Command>(0), {1, 2}), Status::UnknownCommand);
}

TEST_F(VirtualBoardTest, GivesNoAnswerToWhatIsNoCommand) {
    EXPECT_FALSE(m_board.Execute(Report{}).has_value());
    Report damaged = board::EncodeCommand({Command::ResetDevice, 1, {}});
    damaged[20] ^= 1;
    EXPECT_FALSE(m_board.Execute(damaged).has_value());
    EXPECT_FALSE(
        m_board.Execute(board::EncodeReply({Command::ResetDevice, 1, Status::Ok, {}})).has_value());
    EXPECT_TRUE(m_journal.Texts().empty());
}

TEST_F(VirtualBoardTest, AnnouncesChangesOfTheTriggerOnly) {
    EXPECT_EQ(Send(Command::SetTriggerPeriod, {25}), Status::Ok);
    EXPECT_EQ(Send(Command::SetTriggerMode, {2}), Status::Ok);
    EXPECT_EQ(Send(Command::SetTriggerMode, {2}), Status::Ok);
    EXPECT_EQ(Send(Command::ResetFpga, {}), Status::Ok);
    EXPECT_EQ(Send(Command::SetTriggerMode, {3}), Status::Ok);
    EXPECT_EQ(Send(Command::ResetDevice, {}), Status::Ok);
    EXPECT_EQ(Send(Command::SetLaserEnable, {1, 1}), Status::Ok);
    EXPECT_EQ(Send(Command::QueryTriggerPeriod, {}), Status::Ok);
    std::vector<std::tuple<int, int, bool>> seen;
    for (const Announced& each : m_announced) {
        seen.emplace_back(each.state.triggerMode, each.state.triggerPeriod, each.modeWritten);
    }
    EXPECT_THAT(seen, ElementsAre(std::tuple(5, 25, false), std::tuple(2, 25, true),
                                  std::tuple(2, 25, true), std::tuple(5, 25, true),
                                  std::tuple(3, 25, true), std::tuple(5, 10, true)));
}

TEST_F(VirtualBoardTest, AnnouncesNothingThatAFaultPrevented) {
    ASSERT_TRUE(m_faults.Fail("zr3DSetVideoTrigleMode", 1));
    EXPECT_EQ(Send(Command::SetTriggerMode, {1}), Status::Failed);
    EXPECT_TRUE(m_announced.empty());
    EXPECT_EQ(m_board.State().triggerMode, 5);
}

TEST_F(VirtualBoardTest, GoesOnWhileACommandHangs) {
    ASSERT_TRUE(m_faults.Hang("zr3DSetIRLaserLevel"));
    std::thread hanging([this] {
        const auto reply = m_board.Execute(board::EncodeCommand(
            {Command::SetIrLaserLevel, 900, board::ValuesPayload(std::vector<std::int32_t>{8})}));
        ASSERT_TRUE(reply.has_value());
        const auto decoded = board::DecodeReply(*reply, Command::SetIrLaserLevel, 900);
        EXPECT_EQ(std::get<ReplyMessage>(decoded).status, Status::Failed);
    });
    EXPECT_TRUE(m_faults.WaitForHang("zr3DSetIRLaserLevel", std::chrono::seconds(60)));
    EXPECT_EQ(Send(Command::SetTriggerMode, {1}), Status::Ok);
    EXPECT_EQ(m_board.State().triggerMode, 1);
    m_faults.ReleaseHangs();
    hanging.join();
    EXPECT_EQ(m_board.State().irLaserLevel, 1);
}

TEST_F(VirtualBoardTest, RefusesPartsOutsideAPage) {
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    for (const auto& [page, offset] : std::vector<std::pair<int, int>>{{0, 225},
                                                                       {0, 256},
                                                                       {0, -1},
                                                                       {0, kMost},
                                                                       {0, kLeast},
                                                                       {16, 0},
                                                                       {-1, 0},
                                                                       {kMost, 224}}) {
        EXPECT_EQ(Send(Command::ReadUserMemory, {page, offset}), Status::BadValue)
            << page << " " << offset;
    }
    for (const auto& values : std::vector<std::vector<std::int32_t>>{{0, 257, 256},
                                                                     {0, 10, 11},
                                                                     {0, 10, -1},
                                                                     {0, -1, 0},
                                                                     {16, 0, 0},
                                                                     {-1, 0, 0},
                                                                     {0, kMost, kMost},
                                                                     {0, 32, kLeast},
                                                                     {kLeast, kLeast, kLeast},
                                                                     {0, 1, 0},
                                                                     {0, 64, 32}}) {
        EXPECT_EQ(Send(Command::WriteUserMemory, values), Status::BadValue);
    }
    Payload tooMany = board::ValuesPayload(std::vector<std::int32_t>{0, 3, 0});
    tooMany.PutBytes(std::vector<std::uint8_t>(4));
    EXPECT_EQ(Execute(Command::WriteUserMemory, tooMany).status, Status::BadValue);
}

TEST_F(VirtualBoardTest, StandsAnyCommandWithAnyPayload) {
    std::mt19937 random(support::Seed());
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> small(-1, 300);
    for (int round = 0; round < 20000; ++round) {
        Payload payload;
        for (int value = byte(random) % 5; value > 0; --value) {
            payload.PutValue(byte(random) < 200 ? small(random) : static_cast<int>(random()));
        }
        payload.PutBytes(std::vector<std::uint8_t>(static_cast<std::size_t>(byte(random)) %
                                                   (Payload::kCapacity - payload.Size() + 1)));
        const auto all = board::AllCommands();
        const auto command = byte(random) < 240
                                 ? all[static_cast<std::size_t>(random()) % all.size()].command
                                 : static_cast<Command>(byte(random));
        Execute(command, payload);
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
