#include "platform/text/NearNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using text::NearNames;

TEST(NearNames, NamesThatComeNearAreSuggested) {
    const std::vector<std::string> names{"laser-line-duty", "ir-laser-duty", "project", "gain.0"};
    EXPECT_THAT(NearNames("laser-line-dutty", names), ElementsAre("laser-line-duty"));
    EXPECT_THAT(NearNames("laser-duty", names), ElementsAre("ir-laser-duty", "laser-line-duty"));
    EXPECT_THAT(NearNames("gain", names), ElementsAre("gain.0"));
    EXPECT_THAT(NearNames("agin.0", names), ElementsAre("gain.0"));
    EXPECT_THAT(NearNames("ab", {"ba"}), IsEmpty());
    EXPECT_THAT(NearNames("abc", {"bac"}), ElementsAre("bac"));
    EXPECT_THAT(NearNames("zebra", names), IsEmpty());
    EXPECT_THAT(NearNames("-1", names), IsEmpty());
    EXPECT_THAT(NearNames("", names), IsEmpty());
    EXPECT_THAT(NearNames(std::string(10'000, 'a'), names), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
