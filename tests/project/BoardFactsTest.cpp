#include <gtest/gtest.h>

#include "platform/include/BoardFacts.h"

namespace Korvex3Sync::tests {

namespace {

TEST(BoardFacts, EveryTriggerModeIsWhatTheBoardDoes) {
    using hardware::TriggerRun;
    struct Row {
        int mode;
        TriggerRun run;
        bool color;
        bool lines;
        bool pattern;
    };
    for (const Row& row : {Row{0, TriggerRun::Off, false, false, false},
                           Row{1, TriggerRun::Running, false, true, false},
                           Row{2, TriggerRun::Running, false, false, true},
                           Row{3, TriggerRun::Running, true, false, true},
                           Row{4, TriggerRun::Single, false, false, false},
                           Row{5, TriggerRun::Off, false, false, false},
                           Row{6, TriggerRun::Running, true, true, false},
                           Row{7, TriggerRun::Off, false, false, false},
                           Row{-1, TriggerRun::Off, false, false, false}}) {
        EXPECT_EQ(hardware::RunOf(row.mode), row.run) << row.mode;
        EXPECT_EQ(hardware::AddsColor(row.mode), row.color) << row.mode;
        EXPECT_EQ(hardware::ShowsLines(row.mode), row.lines) << row.mode;
        EXPECT_EQ(hardware::ShowsPattern(row.mode), row.pattern) << row.mode;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
