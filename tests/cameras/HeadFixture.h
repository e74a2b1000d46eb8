#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/include/zr3DCamera.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests {

/// A small virtual head, and handles that are released with the test.
class HeadFixture : public testing::Test {
protected:
    static constexpr int kWidth = 64;
    static constexpr int kHeight = 32;
    static constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

    HeadFixture() { m_head = Request(Small()); }
    ~HeadFixture() override { virtual_head::WithdrawVirtualHead(); }

    void TearDown() override {
        EXPECT_EQ(m_head->GetFaults().Unused(), std::vector<std::string>());
    }

    static virtual_head::HeadDescription Small() {
        virtual_head::HeadDescription description;
        description.width = kWidth;
        description.height = kHeight;
        return description;
    }

    static std::shared_ptr<virtual_head::VirtualHead> Request(
        const virtual_head::HeadDescription& description) {
        std::string error;
        EXPECT_TRUE(virtual_head::RequestVirtualHead(description, error)) << error;
        return virtual_head::RequestedVirtualHead();
    }

    static void* Create(const char* type = "KV00") {
        void* handle = nullptr;
        EXPECT_EQ(zr3DCamera::CreateCamera(handle, type), 0);
        EXPECT_NE(handle, nullptr);
        return handle;
    }

    static void* CreateOpen() {
        void* const handle = Create();
        EXPECT_EQ(zr3DCamera::OpenCamera(handle, "KV00A1001", 0, 0), 0);
        return handle;
    }

    static void* CreateStarted() {
        void* const handle = CreateOpen();
        EXPECT_EQ(zr3DCamera::StartCamera(handle, 0.0), 0);
        return handle;
    }

    /// The board as it is with this trigger mode.
    void Trigger(int mode, int period = 1) const {
        virtual_head::BoardState board;
        board.triggerMode = mode;
        board.triggerPeriod = period;
        m_head->Clock().Apply(board, true);
    }

    std::shared_ptr<virtual_head::VirtualHead> m_head;
};

}  // namespace Korvex3Sync::tests
