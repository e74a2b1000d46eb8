#include "platform/board/protocol/Commands.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;

TEST(Commands, HaveOneCodeEachAndAreFoundByIt) {
    std::set<Command> codes;
    for (const CommandInfo& info : AllCommands()) {
        EXPECT_TRUE(codes.insert(info.command).second) << info.function;
        EXPECT_EQ(FindCommand(info.command), &info);
    }
    for (int code = 0; code < 256; ++code) {
        const auto command = static_cast<Command>(code);
        EXPECT_EQ(FindCommand(command) != nullptr, codes.contains(command)) << code;
    }
}

TEST(Commands, OfDutyRatiosAndWorkTimesHaveTheSelectorsAsCodes) {
    const std::map<int, std::string> selectors{
        {41, "zr3DSetLedDutioRatio"}, {48, "zr3DQueryLedDutioRatio"}, {49, "zr3DSetDutioRatio"},
        {50, "zr3DQueryDutioRatio"},  {51, "zr3DSetDutioRatio"},      {52, "zr3DQueryDutioRatio"},
        {53, "zr3DSetDutioRatio"},    {54, "zr3DQueryDutioRatio"},    {82, "zr3DSetWorkTime"},
        {83, "zr3DQueryWorkTime"},    {84, "zr3DSetWorkTime"},        {85, "zr3DQueryWorkTime"},
        {86, "zr3DSetWorkTime"},      {87, "zr3DQueryWorkTime"}};
    const std::set<std::string> functions{"zr3DSetLedDutioRatio", "zr3DQueryLedDutioRatio",
                                          "zr3DSetDutioRatio",    "zr3DQueryDutioRatio",
                                          "zr3DSetWorkTime",      "zr3DQueryWorkTime"};
    for (const std::string& function : functions) {
        for (int selector = -300; selector < 600; ++selector) {
            const auto named = selectors.find(selector);
            const bool ofFunction = named != selectors.end() && named->second == function;
            const CommandInfo* const found = FindSelected(function, selector);
            ASSERT_EQ(found != nullptr, ofFunction) << function << " " << selector;
            if (found) {
                EXPECT_EQ(static_cast<int>(found->command), selector);
            }
        }
    }
}

TEST(Commands, AreNotReachedByASelectorOfAnotherFunction) {
    EXPECT_EQ(FindSelected("zr3DResetDevice", static_cast<int>(Command::ResetDevice)), nullptr);
    EXPECT_EQ(FindSelected("zr3DSetDutioRatio", static_cast<int>(Command::ResetDevice)), nullptr);
}

TEST(Commands, AllServeAFunctionThatTakesFaults) {
    for (const CommandInfo& info : AllCommands()) {
        EXPECT_TRUE(virtual_head::Faults::Known(info.function)) << info.function;
    }
}

TEST(PayloadShape, TakesTheSizesBetweenItsLeastAndItsMost) {
    const PayloadShape shape{2, 1, 3};
    EXPECT_FALSE(shape.Fits(0));
    EXPECT_FALSE(shape.Fits(8));
    EXPECT_TRUE(shape.Fits(9));
    EXPECT_TRUE(shape.Fits(11));
    EXPECT_FALSE(shape.Fits(12));
}

}  // namespace
}  // namespace Korvex3Sync::tests
