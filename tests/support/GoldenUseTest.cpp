#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/GoldenSections.h"

namespace Korvex3Sync::tests::support {
namespace {

// CTest runs the programs that compare with golden files before this one, and has their notes
// removed before that.
TEST(GoldenUse, EverySectionIsUsed) {
    const char* const used = std::getenv(kGoldenUsedVariable);
    ASSERT_NE(used, nullptr) << "run this test with ctest";
    ASSERT_TRUE(std::filesystem::exists(used)) << "no program compared with a golden file";
    EXPECT_THAT(UnusedGolden(KORVEX_GOLDEN_DIR, used), testing::IsEmpty());
}

}  // namespace
}  // namespace Korvex3Sync::tests::support
