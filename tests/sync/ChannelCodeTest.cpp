#include "sync/cameras/ChannelCodes.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

ChannelAssignment Assign(std::vector<std::string> serials) {
    std::vector<char*> pointers;
    for (auto& serial : serials) {
        pointers.push_back(serial.data());
    }
    return AssignChannels(pointers);
}

TEST(ChannelCodes, EqualNeighboursShareACamera) {
    const auto assignment = Assign({"A", "A", "B"});
    EXPECT_EQ(assignment.codes, (std::vector<int>{0x000, 0x101, 0x210}));
    EXPECT_EQ(assignment.serials, (std::vector<std::string>{"A", "B"}));
}

TEST(ChannelCodes, TheSameSerialFurtherDownIsAGroupOfItsOwn) {
    const auto assignment = Assign({"A", "B", "A"});
    EXPECT_EQ(assignment.codes, (std::vector<int>{0x000, 0x110, 0x220}));
    EXPECT_EQ(assignment.serials, (std::vector<std::string>{"A", "B", "A"}));
}

TEST(ChannelCodes, AreTakenApartAgain) {
    const int code = 0x2A3;
    EXPECT_EQ(ChannelRepeat(code), 3);
    EXPECT_EQ(ChannelGroup(code), 10);
    EXPECT_EQ(ChannelIndex(code), 2);
}

TEST(ChannelCodes, SixteenGroupsFitAndSeventeenDoNot) {
    std::vector<std::string> serials;
    for (char c = 'a'; c < 'a' + 16; ++c) {
        serials.emplace_back(1, c);
    }
    EXPECT_TRUE(Assign(serials).fits);
    serials.emplace_back("z");
    const auto tooMany = Assign(serials);
    EXPECT_FALSE(tooMany.fits);
    EXPECT_EQ(ChannelGroup(tooMany.codes.back()), 0) << "cut to four bits";
}

TEST(ChannelCodes, SixteenEqualNeighboursFitAndSeventeenDoNot) {
    EXPECT_TRUE(Assign(std::vector<std::string>(16, "A")).fits);
    const auto tooMany = Assign(std::vector<std::string>(17, "A"));
    EXPECT_FALSE(tooMany.fits);
    EXPECT_EQ(ChannelGroup(tooMany.codes.back()), 0) << "a repeat never spills into the group";
}

TEST(ChannelCodes, NullCountsAsEmpty) {
    std::string empty;
    const auto assignment = AssignChannels({nullptr, empty.data()});
    EXPECT_EQ(assignment.codes, (std::vector<int>{0x000, 0x101}));
}

TEST(ChannelCodes, TheMaskHasOneBitForEachEntryOfTheList) {
    EXPECT_EQ(AllCamerasMask(3), 7u);
    EXPECT_EQ(AllCamerasMask(1), 1u);
    EXPECT_EQ(AllCamerasMask(31), 0x7FFFFFFFu);
    EXPECT_EQ(AllCamerasMask(32), 0u) << "counted modulo 32";
}

TEST(ChannelCodes, NoSerialsGiveNoCodes) {
    EXPECT_TRUE(AssignChannels({}).codes.empty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
