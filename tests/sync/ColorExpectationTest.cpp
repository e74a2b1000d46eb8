#include "sync/frames/ColorExpectation.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

/// Frames of one camera beside changes of the trigger mode.
class Expectation : public testing::Test {
protected:
    /// The mode changes to the other kind while the trigger runs, or with a start.
    void Change() {
        m_run.givesColor = !m_run.givesColor;
        ++m_run.changes;
    }
    void StartWithChange() {
        Change();
        m_run.changesAtStart = m_run.changes;
        m_ofLatestRun = false;
    }
    bool Mono() { return m_expectation.TakeMono(m_run, m_ofLatestRun); }
    bool MonoWithColor() {
        const bool expected = Mono();
        m_expectation.TakeColor(m_run);
        return expected;
    }

    ColorExpectation m_expectation;
    TriggerStarts::Run m_run;
    bool m_ofLatestRun = true;
};

TEST_F(Expectation, WithoutAnyModeThereIsNone) {
    EXPECT_FALSE(Mono());
    EXPECT_FALSE(MonoWithColor());
    EXPECT_FALSE(Mono());
}

TEST_F(Expectation, BeginsWithTheFirstFrameOfAStart) {
    StartWithChange();
    EXPECT_FALSE(Mono()) << "it may be of the run before";
    m_ofLatestRun = true;
    EXPECT_TRUE(Mono());
    EXPECT_TRUE(Mono()) << "also when colour frames are lost from the beginning";
}

TEST_F(Expectation, BeginsWithTheFirstColourFrameWhereTheTriggerRunsOn) {
    EXPECT_FALSE(Mono());
    Change();
    EXPECT_FALSE(Mono());
    EXPECT_FALSE(MonoWithColor());
    EXPECT_TRUE(Mono());
    EXPECT_TRUE(Mono());
}

TEST_F(Expectation, EndsAtOnceWithTheMode) {
    StartWithChange();
    m_ofLatestRun = true;
    EXPECT_TRUE(MonoWithColor());
    Change();
    EXPECT_FALSE(MonoWithColor()) << "one that waited";
    EXPECT_FALSE(Mono());
}

TEST_F(Expectation, ColourFramesThatWaitSinceTwoModesBeforeShowNothing) {
    StartWithChange();
    m_ofLatestRun = true;
    EXPECT_TRUE(MonoWithColor());
    Change();
    Change();
    EXPECT_FALSE(MonoWithColor());
    EXPECT_FALSE(Mono());
    EXPECT_FALSE(Mono()) << "of the mode between";
    EXPECT_FALSE(MonoWithColor()) << "the mode with colour has begun again";
    EXPECT_TRUE(Mono());
}

TEST_F(Expectation, AChangeAfterAStartIsNotBehindTheFramesOfThatStart) {
    StartWithChange();  // with colour
    Change();
    Change();
    m_ofLatestRun = true;
    EXPECT_FALSE(MonoWithColor());
    EXPECT_FALSE(Mono());
    EXPECT_FALSE(Mono());
    EXPECT_FALSE(MonoWithColor());
    EXPECT_TRUE(Mono());
}

TEST_F(Expectation, OneRoundOfKeysAfterAChangeAllFramesAreOfTheNewestMode) {
    EXPECT_FALSE(Mono());
    Change();
    for (int frame = 0; frame < 256; ++frame) {
        ASSERT_FALSE(Mono()) << frame;
    }
    EXPECT_TRUE(Mono());
}

TEST_F(Expectation, TheRoundBeginsAgainWithEachChange) {
    Change();
    for (int frame = 0; frame < 200; ++frame) {
        Mono();
    }
    Change();
    Change();
    for (int frame = 0; frame < 200; ++frame) {
        ASSERT_FALSE(Mono()) << frame;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
