#include "korvexctl/health/ImageSetCheck.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ImageSetCheck;

constexpr int kWidth = 8;
constexpr int kHeight = 4;

/// A check that gets sets of these keys, one after the other.
ImageSetCheck::Counts Look(const std::vector<int>& keys) {
    ImageSetCheck check(0, kWidth, kHeight);
    for (const int key : keys) {
        std::vector<unsigned char> left(std::size_t{kWidth} * kHeight);
        std::vector<unsigned char> right(left.size());
        right[3] = static_cast<unsigned char>(key);
        std::vector<unsigned char*> images{left.data(), right.data()};
        std::vector<int> info{1, 1};
        ImageSetCheck::OnImageSet(check.Context(), images, kWidth, kHeight, info);
    }
    return check.WaitForQuiet(std::chrono::milliseconds(1), std::chrono::milliseconds(1));
}

TEST(ImageSetCheck, KeysThatGoOnAreInOrderAlsoOverGapsAndTheirWrap) {
    EXPECT_EQ(Look({5, 6, 8, 100, 227, 255, 0, 1}).backwards, 0);
}

TEST(ImageSetCheck, AKeyThatComesTwiceOrAfterItsSuccessorIsOutOfOrder) {
    EXPECT_EQ(Look({5, 5}).backwards, 1);
    EXPECT_EQ(Look({5, 6, 4}).backwards, 1);
    EXPECT_EQ(Look({0, 255, 0}).backwards, 1);
}

}  // namespace

}  // namespace Korvex3Sync::tests
