#include <gtest/gtest.h>

#include "platform/include/USBTREE.h"
#include "support/Text.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::tests {
namespace {

using namespace USBTREE;

// The one test of its program: the message comes once in the life of a process.
TEST(WithoutARequestedHead, NoPathIsFoundAndThatIsSaidOnce) {
    Korvex3Sync::virtual_head::WithdrawVirtualHead();
    testing::internal::CaptureStderr();
    std::vector<std::string> paths;
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(EnumAllHCD());
        EXPECT_FALSE(GetSpecifyDeviceTreePath(0x3267, 0x5752, paths));
        EraseList();
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(paths.empty());
    EXPECT_EQ(Count(said, "KORVEX_VIRTUAL_HEAD"), 1U) << said;
}

}  // namespace
}  // namespace Korvex3Sync::tests
