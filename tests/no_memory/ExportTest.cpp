#include <gtest/gtest.h>

#include "Korvex3Sync/Korvex3Sync.h"
#include "no_memory/FailingAllocation.h"

namespace Korvex3Sync::tests {
namespace {

TEST(StatusTextWithoutMemory, IsNullAndNeverTheCallersOwnText) {
    char mine = 'x';
    char* text = &mine;
    const FailingAllocation failing(1);
    GetStatusDescriptionString(STATUS_SUCCESS, text);
    EXPECT_TRUE(failing.Failed());
    EXPECT_EQ(text, nullptr) << "the caller deletes it";
    EXPECT_EQ(mine, 'x');
}

TEST(ExportWithoutMemory, SaysThatItWasEnteredAllTheSame) {
    void* const none = nullptr;
    int count = 0;
    const FailingAllocation failing(1);
    EXPECT_EQ(GetConnectCameraCount(none, count), STATUS_NOT_CONNECTED);
    EXPECT_FALSE(failing.Failed()) << "a record outside of the frame that catches needs no memory";
}

}  // namespace
}  // namespace Korvex3Sync::tests
