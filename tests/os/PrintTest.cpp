#include "platform/os/Print.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

using namespace os;

TEST(Print, FormatsToStandardOutput) {
    testing::internal::CaptureStdout();
    Print("camera %d of %.2s", 7, "KV00");
    Print("\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "camera 7 of KV\n");
}

TEST(Print, FormatsToStandardError) {
    testing::internal::CaptureStderr();
    PrintError("%s: %d\n", "error", 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: 7\n");
}

}  // namespace
}  // namespace Korvex3Sync::tests
