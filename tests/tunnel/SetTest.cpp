#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Eq;
using ::testing::Optional;
using tunnel::AreaWriter;
using tunnel::SegmentBytes;

constexpr std::size_t kImage = 1280UL * 1024;

std::vector<std::string> NamesOfSet(int number) {
    return {std::to_string(number) + "/0", std::to_string(number) + "/1",
            std::to_string(number) + "/2"};
}

class Sets : public ::testing::Test {
protected:
    OwnRuntimeFolder m_folder;
};

TEST_F(Sets, AreFoundByNameWithTheirBytes) {
    const auto writer = MakeArea("images", 24, kImage);
    const auto reader = ReadArea("images");
    ASSERT_TRUE(WriteNamed(*writer, NamesOfSet(1), kImage));
    for (const std::string& name : NamesOfSet(1)) {
        EXPECT_THAT(Found(*reader, name), Optional(Eq(BytesFor(name, kImage)))) << name;
    }
    EXPECT_EQ(Found(*reader, "1/3"), std::nullopt);
}

TEST_F(Sets, TakeTheOldestPlaces) {
    const auto writer = MakeArea("images", 9, 1000);
    const auto reader = ReadArea("images");
    for (int number = 1; number <= 10; ++number) {
        ASSERT_TRUE(WriteNamed(*writer, NamesOfSet(number), 1000));
        for (int earlier = 1; earlier <= number; ++earlier) {
            for (const std::string& name : NamesOfSet(earlier)) {
                EXPECT_EQ(Found(*reader, name).has_value(), earlier > number - 3) << name;
            }
        }
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
