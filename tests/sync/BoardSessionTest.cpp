#include "sync/board/BoardSession.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/Recorder.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

/// A board session without a manager.
class BoardSessionAlone : public testing::Test {
protected:
    BoardSessionAlone() { Recorder::Get().Reset(); }
    bool Poll() {
        unsigned char first = 0;
        unsigned char second = 0;
        return m_board.PollStatus(first, second);
    }
    void Lose() {
        Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
        ASSERT_FALSE(Poll());
    }

    os::CriticalSection m_device;
    TriggerStarts m_starts;
    BoardSession m_board{m_device, m_starts};
};

TEST_F(BoardSessionAlone, IsClosedAtFirstAndAfterAFailedOpen) {
    EXPECT_FALSE(m_board.IsOpen());
    Recorder::Get().FailNth("zr3DInitHidDev", 1);
    EXPECT_EQ(m_board.Connect("A"), STATUS_PROJECTOR);
    EXPECT_FALSE(m_board.IsOpen());
    EXPECT_EQ(m_board.Connect("A"), STATUS_SUCCESS);
    EXPECT_TRUE(m_board.IsOpen());
    m_board.ExitProjector();
    EXPECT_FALSE(m_board.IsOpen());
}

TEST_F(BoardSessionAlone, ReopensTheBoardThatWasConnectedWhateverWasOpenedSince) {
    ASSERT_EQ(m_board.Connect("CONNECTED"), STATUS_SUCCESS);
    m_board.ExitProjector();
    ASSERT_EQ(m_board.InitProjector("OTHER"), STATUS_SUCCESS);
    EXPECT_EQ(m_board.ReOpen(), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"zr3DInitHidDev(null, 3267, 5752, CONNECTED)", "zr3DExitHidDev(B1)",
                     "zr3DInitHidDev(null, 3267, 5752, OTHER)", "zr3DExitHidDev(B2)",
                     "zr3DInitHidDev(null, 3267, 5752, CONNECTED)"}));
}

TEST_F(BoardSessionAlone, AConnectThatFailsIsNotWhatIsReopened) {
    ASSERT_EQ(m_board.Connect("GOOD"), STATUS_SUCCESS);
    m_board.ExitProjector();
    Recorder::Get().FailNth("zr3DInitHidDev", 1);
    EXPECT_EQ(m_board.Connect("BAD"), STATUS_PROJECTOR);
    EXPECT_EQ(m_board.ReOpen(), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DInitHidDev(null, 3267, 5752, GOOD)");
}

TEST_F(BoardSessionAlone, AReopenedBoardStaysLostAndAConnectedOneIsNot) {
    ASSERT_EQ(m_board.Connect("A"), STATUS_SUCCESS);
    Lose();
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_FAILED);
    ASSERT_EQ(m_board.ReOpen(), STATUS_SUCCESS);
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_FAILED);
    m_board.ExitProjector();
    ASSERT_EQ(m_board.Connect("A"), STATUS_SUCCESS);
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_SUCCESS);
}

TEST_F(BoardSessionAlone, APollDecidesWhetherTheBoardIsLostAndAQueryDoesNot) {
    EXPECT_FALSE(Poll()) << "no board";
    ASSERT_EQ(m_board.InitProjector("A"), STATUS_SUCCESS);
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_FAILED) << "still marked";
    EXPECT_TRUE(Poll());
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_SUCCESS);
    unsigned char first = 0;
    unsigned char second = 0;
    Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
    EXPECT_EQ(m_board.QueryCurrentStatus(first, second), STATUS_FAILED);
    EXPECT_EQ(m_board.Project(PROJECT_OFF), STATUS_SUCCESS);
}

TEST_F(BoardSessionAlone, SwitchesOffWhatIsOnBeforeItCloses) {
    ASSERT_EQ(m_board.InitProjector("A"), STATUS_SUCCESS);
    m_board.SwitchOffAndClose();
    EXPECT_FALSE(m_board.IsOpen());
    ASSERT_EQ(m_board.InitProjector("A"), STATUS_SUCCESS);
    ASSERT_EQ(m_board.EnableHeartbeat(true), STATUS_SUCCESS);
    m_board.SwitchOffAndClose();
    EXPECT_EQ(
        Recorder::Get().Calls(),
        (Calls{"zr3DInitHidDev(null, 3267, 5752, A)", "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)",
               "zr3DInitHidDev(null, 3267, 5752, A)", "zr3DEnableHeartbeat(B2, 1)",
               "zr3DEnableHeartbeat(B2, 0)", "zr3DProject(B2, 0)", "zr3DExitHidDev(B2)"}));
}

TEST_F(BoardSessionAlone, AHeartbeatThatWasNotAskedForIsSwitchedOnAndNotRemembered) {
    ASSERT_EQ(m_board.InitProjector("A"), STATUS_SUCCESS);
    m_board.SwitchHeartbeatOn();
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 1)");
    EXPECT_FALSE(m_board.SettingsToRestore().heartbeatEnabled);
}

TEST_F(BoardSessionAlone, TellsOfEveryWriteOfTheTriggerModeAlsoOfARestoredOne) {
    ASSERT_EQ(m_board.InitProjector("A"), STATUS_SUCCESS);
    ASSERT_EQ(m_board.EnableVideoTrigger(TRIGGER_LASER_LINES, true), STATUS_SUCCESS);
    EXPECT_EQ(m_starts.Current().starts, 1u);
    m_board.RestoreSettings();
    EXPECT_EQ(m_starts.Current().starts, 1u) << "it ran on";
    EXPECT_TRUE(m_board.Restart());
    m_board.RestoreSettings();
    EXPECT_EQ(m_starts.Current().starts, 2u) << "the restart had ended it";
    EXPECT_EQ(m_board.ResetBoard(true, false), STATUS_SUCCESS);
    m_board.RestoreSettings();
    EXPECT_EQ(m_starts.Current().starts, 3u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
