#include <gtest/gtest.h>

#include "platform/include/zr3DHandiDLPdev.h"
#include "support/Text.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::tests {
namespace {

using namespace zr3DHandiDLPdev;

// The one test of its program: the message comes once in the life of a process.
TEST(WithoutARequestedHead, NoBoardIsFoundAndThatIsSaidOnce) {
    Korvex3Sync::virtual_head::WithdrawVirtualHead();
    testing::internal::CaptureStderr();
    for (int round = 0; round < 3; ++round) {
        int local = 0;
        void* handle = &local;
        EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", ""));
        EXPECT_EQ(handle, nullptr);
        std::string version = "as it was";
        EXPECT_FALSE(zr3DQueryFirmwareVersionFast("", version));
        EXPECT_EQ(version, "as it was");
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Count(said, "KORVEX_VIRTUAL_HEAD"), 1U) << said;
}

}  // namespace
}  // namespace Korvex3Sync::tests
