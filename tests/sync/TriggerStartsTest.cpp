#include "sync/frames/TriggerStarts.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

constexpr int kMono = 1;
constexpr int kMonoPattern = 2;
constexpr int kColorPattern = 3;
constexpr int kSingle = 4;
constexpr int kOff = 5;
constexpr int kColor = 6;

class Starts : public testing::Test {
protected:
    /// How many starts this write is.
    std::uint64_t Write(int mode, bool accepted = true) {
        const auto before = m_starts.Current().starts;
        m_starts.Writing(mode);
        const auto started = m_starts.Current().starts - before;
        m_starts.Written(accepted);
        EXPECT_EQ(m_starts.Current().starts - before, started) << "counted before the write";
        return started;
    }
    bool GivesColor() const { return m_starts.Current().givesColor; }

    TriggerStarts m_starts;
};

TEST_F(Starts, AreWhatTurnsARunningModeOn) {
    EXPECT_EQ(Write(kMono), 1u) << "from unknown";
    EXPECT_EQ(Write(kOff), 0u);
    EXPECT_EQ(Write(kColor), 1u) << "from off";
    EXPECT_EQ(Write(kSingle), 0u);
    EXPECT_EQ(Write(kMonoPattern), 1u) << "from single exposures";
    EXPECT_EQ(Write(99), 0u) << "a mode that the board does not know is off";
    EXPECT_EQ(Write(kColorPattern), 1u);
}

TEST_F(Starts, AChangeOfTheModeWhileTheTriggerRunsIsNone) {
    Write(kMono);
    for (int mode : {kMono, kMonoPattern, kColorPattern, kColor, kMono}) {
        EXPECT_EQ(Write(mode), 0u) << mode;
    }
}

TEST_F(Starts, AfterARefusedWriteTheTriggerMayBeInAnyMode) {
    Write(kMono);
    EXPECT_EQ(Write(kOff, false), 0u);
    EXPECT_EQ(Write(kMono), 1u);
}

TEST_F(Starts, ARestartIsAStartAndTheNextRunBelongsToIt) {
    Write(kMono);
    const auto before = m_starts.Current().starts;
    m_starts.Restart();
    EXPECT_EQ(m_starts.Current().starts, before + 1);
    EXPECT_EQ(m_starts.Current().countsFrom, before + 1);
    EXPECT_EQ(Write(kMono), 0u) << "the trigger may have run all the time";
    EXPECT_EQ(Write(kOff), 0u);
    EXPECT_EQ(Write(kMono), 1u);
    EXPECT_EQ(m_starts.Current().countsFrom, before + 1);
}

TEST_F(Starts, AfterARestartTheTriggerIsOffOnceThatIsWritten) {
    for (int mode : {kOff, kSingle}) {
        m_starts.Restart();
        EXPECT_EQ(Write(mode), 0u) << mode;
        EXPECT_EQ(Write(kMono), 1u) << mode;
    }
}

TEST_F(Starts, AfterARestartARefusedWriteTellsNothing) {
    m_starts.Restart();
    EXPECT_EQ(Write(kMono, false), 0u);
    EXPECT_EQ(Write(kMono), 0u);
    m_starts.Restart();
    EXPECT_EQ(Write(kOff, false), 0u);
    EXPECT_EQ(Write(kMono), 0u);
}

TEST_F(Starts, AfterAResetTheNextRunIsAStart) {
    Write(kMono);
    const auto before = m_starts.Current().starts;
    m_starts.ForgetState();
    EXPECT_EQ(m_starts.Current().starts, before) << "frames of the run before may still come";
    EXPECT_EQ(Write(kMono), 1u);
}

TEST_F(Starts, ColourIsExpectedInTheModesThatGiveIt) {
    EXPECT_FALSE(GivesColor());
    Write(kColor);
    EXPECT_TRUE(GivesColor());
    Write(kMonoPattern);
    EXPECT_FALSE(GivesColor());
    Write(kColorPattern);
    EXPECT_TRUE(GivesColor());
}

TEST_F(Starts, AStopLeavesTheExpectationForTheFramesThatWait) {
    Write(kColor);
    Write(kOff);
    EXPECT_TRUE(GivesColor());
    Write(kMono);
    Write(kOff);
    EXPECT_FALSE(GivesColor());
}

TEST_F(Starts, WhileTheModeChangesNoColourIsExpected) {
    Write(kMono);
    m_starts.Writing(kColor);
    EXPECT_FALSE(GivesColor()) << "frames of the former mode still come";
    m_starts.Written(true);
    EXPECT_TRUE(GivesColor());
    m_starts.Writing(kMono);
    EXPECT_FALSE(GivesColor()) << "frames of the new mode already come";
    m_starts.Written(false);
    EXPECT_TRUE(GivesColor()) << "refused";
}

TEST_F(Starts, ChangesOfTheColourAreCountedOnceTheyAreAccepted) {
    const auto changes = [this] { return m_starts.Current().changes; };
    Write(kMono);
    Write(kMonoPattern);
    EXPECT_EQ(changes(), 0u);
    m_starts.Writing(kColor);
    EXPECT_EQ(changes(), 0u);
    m_starts.Written(true);
    EXPECT_EQ(changes(), 1u);
    Write(kColorPattern);
    Write(kOff);
    Write(kSingle);
    Write(kMono, false);
    EXPECT_EQ(changes(), 1u);
    Write(kMono);
    EXPECT_EQ(changes(), 2u);
}

TEST_F(Starts, AStartHasTheChangesBehindItThatCameWithItOrBefore) {
    const auto behind = [this] { return m_starts.Current().changesAtStart; };
    Write(kColor);
    EXPECT_EQ(behind(), 1u);
    Write(kMono);
    EXPECT_EQ(behind(), 1u) << "the trigger runs on";
    Write(kOff);
    Write(kMono);
    EXPECT_EQ(behind(), 2u);
    Write(kColor);
    m_starts.Restart();
    EXPECT_EQ(behind(), 3u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
