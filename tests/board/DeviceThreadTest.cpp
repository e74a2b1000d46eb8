#include "platform/board/DeviceThread.h"

#include <gtest/gtest.h>

#include <future>

#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using Clock = std::chrono::steady_clock;
using virtual_head::VirtualHead;

constexpr auto kCall = "zr3DProject";
constexpr std::chrono::seconds kPatience{60};

class BoardThread : public testing::Test {
protected:
    BoardThread() { EXPECT_TRUE(m_device.Start()); }
    bool Give(DeviceThread::Task task) {
        return m_device.Give(kCall, std::move(task), Clock::now() + kPatience);
    }

    RequestedHead m_head;
    DeviceThread m_device{virtual_head::RequestedVirtualHead()};
};

TEST_F(BoardThread, ATaskThatOnlyLacksProcessorTimeIsWaitedForBeyondTheDeadline) {
    std::promise<void> turn;
    ASSERT_TRUE(Give([got = turn.get_future().share()](VirtualHead&) { got.wait(); }));
    auto idle = std::async(std::launch::async, [this] { return m_device.WaitIdle(Clock::now()); });
    EXPECT_EQ(idle.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    turn.set_value();
    EXPECT_TRUE(idle.get());
}

TEST_F(BoardThread, ATaskThatAFaultHoldsIsWaitedForUntilTheDeadline) {
    ASSERT_TRUE(m_head->GetFaults().Hang(kCall));
    ASSERT_TRUE(Give([](VirtualHead& head) { head.GetFaults().Meet(kCall); }));
    ASSERT_TRUE(m_head->GetFaults().WaitForHang(kCall, kPatience));
    EXPECT_FALSE(m_device.WaitIdle(Clock::now()));
    m_head->GetFaults().ReleaseHangs(kCall);
    EXPECT_TRUE(m_device.WaitIdle(Clock::now() + kPatience));
}

}  // namespace
}  // namespace Korvex3Sync::tests
