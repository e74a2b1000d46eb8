#include "platform/os/Environment.h"

#include <gtest/gtest.h>

#include "support/Environment.h"

namespace Korvex3Sync::tests {

namespace {

TEST(Variable, IsReadAsUtf8) {
    constexpr char kName[] = "Köпа日𝄞";
    EXPECT_EQ(os::Variable("KORVEX_TEST_VARIABLE"), std::nullopt);
    SetVariable("KORVEX_TEST_VARIABLE", kName);
    EXPECT_EQ(os::Variable("KORVEX_TEST_VARIABLE"), kName);
    RemoveVariable("KORVEX_TEST_VARIABLE");
}

}  // namespace

}  // namespace Korvex3Sync::tests
