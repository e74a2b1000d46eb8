#include "virtual_head/Request.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "support/Environment.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kVariable = "KORVEX_VIRTUAL_HEAD";

HeadDescription Small() {
    HeadDescription description;
    description.width = 64;
    description.height = 32;
    return description;
}

class RequestTest : public testing::Test {
protected:
    ~RequestTest() override { WithdrawVirtualHead(); }

    std::string m_error;
};

TEST_F(RequestTest, DefaultGivesTheBuiltInHead) {
    ASSERT_TRUE(RequestVirtualHead("default", m_error)) << m_error;
    const auto head = RequestedVirtualHead();
    ASSERT_TRUE(head);
    EXPECT_EQ(head->Description().cameraSerial, "KV00A1001");
    EXPECT_EQ(RequestedVirtualHead(), head) << "one head in a process";
}

TEST_F(RequestTest, HeadFileGivesItsHead) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "head.toml";
    WriteText(file, "[camera]\nwidth = 64\nheight = 32\nserial = \"KV7\"\n");
    ASSERT_TRUE(RequestVirtualHead(file.string(), m_error)) << m_error;
    EXPECT_EQ(RequestedVirtualHead()->Description().cameraSerial, "KV7");
}

TEST_F(RequestTest, RefusedHeadFileLeavesTheHeadOfBefore) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "head.toml";
    WriteText(file, "[camera]\nwide = 64\n");
    ASSERT_TRUE(RequestVirtualHead(Small(), m_error));
    const auto before = RequestedVirtualHead();
    EXPECT_FALSE(RequestVirtualHead(file.string(), m_error));
    EXPECT_THAT(m_error, StartsWith(file.string() + ":2: "));
    EXPECT_EQ(RequestedVirtualHead(), before);
}

TEST_F(RequestTest, RefusedImagesAreToldInOneLine) {
    const TemporaryFolder folder;
    HeadDescription description = Small();
    description.replayFolder = folder.Path();
    EXPECT_FALSE(RequestVirtualHead(description, m_error));
    EXPECT_THAT(m_error, HasSubstr("has no pair"));
}

TEST_F(RequestTest, DescriptionIsHeldToTheRulesOfTheHeadFile) {
    HeadDescription description = Small();
    description.width = 8;
    EXPECT_FALSE(RequestVirtualHead(description, m_error));
    EXPECT_EQ(m_error, "[camera] width: 8 is out of range, 16 to 2000");
    description = Small();
    description.cameraSerial = "GC00";
    EXPECT_FALSE(RequestVirtualHead(description, m_error));
    EXPECT_EQ(m_error, "[camera] serial: \"GC00\" does not begin with KV");
    description = Small();
    description.gainLow = 17;
    EXPECT_FALSE(RequestVirtualHead(description, m_error));
}

TEST_F(RequestTest, NewRequestReplacesTheHeadAndWithdrawingEndsIt) {
    ASSERT_TRUE(RequestVirtualHead(Small(), m_error));
    const auto first = RequestedVirtualHead();
    ASSERT_TRUE(RequestVirtualHead(Small(), m_error));
    EXPECT_NE(RequestedVirtualHead(), first);
    WithdrawVirtualHead();
    EXPECT_FALSE(RequestedVirtualHead());
}

TEST_F(RequestTest, WithdrawingReleasesCallsThatHang) {
    ASSERT_TRUE(RequestVirtualHead(Small(), m_error));
    const auto head = RequestedVirtualHead();
    ASSERT_TRUE(head->GetFaults().Hang("SnapShot"));
    std::thread caller([head] { EXPECT_TRUE(head->GetFaults().Meet("SnapShot")); });
    ASSERT_TRUE(head->GetFaults().WaitForHang("SnapShot", 60s));
    WithdrawVirtualHead();
    caller.join();
}

TEST_F(RequestTest, ManyThreadsMeetTheSameHead) {
    ASSERT_TRUE(RequestVirtualHead(Small(), m_error));
    const auto head = RequestedVirtualHead();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&head] {
            for (int call = 0; call < 200; ++call) {
                EXPECT_EQ(RequestedVirtualHead(), head);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// A process reads the environment once, so each of these tests runs in its own process.
class RequestByEnvironmentTest : public testing::Test {
protected:
    RequestByEnvironmentTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void Leave(bool good) {
        std::cerr << "left\n";
        std::exit(good ? 0 : 1);
    }
};

TEST_F(RequestByEnvironmentTest, NothingAskedForMeansNoHead) {
    EXPECT_EXIT(
        {
            RemoveVariable(kVariable);
            Leave(!RequestedVirtualHead());
        },
        ExitedWithCode(0), "^left\n$");
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "");
            Leave(!RequestedVirtualHead());
        },
        ExitedWithCode(0), "^left\n$");
}

TEST_F(RequestByEnvironmentTest, VariableGivesTheHead) {
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "default");
            const auto head = RequestedVirtualHead();
            Leave(head && head == RequestedVirtualHead());
        },
        ExitedWithCode(0), "^left\n$");
}

TEST_F(RequestByEnvironmentTest, RefusedHeadFileIsToldOnceAndNoHeadExists) {
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "/none/head.toml");
            Leave(!RequestedVirtualHead() && !RequestedVirtualHead() && !MayUseRealDevices());
        },
        ExitedWithCode(0), "^KORVEX_VIRTUAL_HEAD: /none/head.toml: no such file\nleft\n$");
}

TEST_F(RequestByEnvironmentTest, RefusedHeadFileIsToldToWhoAsksFirst) {
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "/none/head.toml");
            std::string error;
            const bool made = RequestHeadOfEnvironment(error);
            std::cerr << error << std::endl;
            // It was decided: there is no head, and nothing more to say.
            Leave(!made && RequestHeadOfEnvironment(error) && !RequestedVirtualHead());
        },
        ExitedWithCode(0), "^KORVEX_VIRTUAL_HEAD: /none/head.toml: no such file\nleft\n$");
}

TEST_F(RequestByEnvironmentTest, RequestMadeBeforeGoesFirst) {
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "/none/head.toml");
            std::string error;
            const bool requested = RequestVirtualHead(Small(), error);
            const auto head = RequestedVirtualHead();
            Leave(requested && head && head->Description().width == 64);
        },
        ExitedWithCode(0), "^left\n$");
}

TEST_F(RequestByEnvironmentTest, RunningHeadEndsWithTheProcess) {
    EXPECT_EXIT(
        {
            SetVariable(kVariable, "default");
            BoardState board;
            board.triggerMode = 6;
            RequestedVirtualHead()->Clock().Apply(board, true);
            Leave(true);
        },
        ExitedWithCode(0), "^left\n$");
}

}  // namespace
}  // namespace Korvex3Sync::tests
