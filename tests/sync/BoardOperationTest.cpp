#include <gtest/gtest.h>

#include <functional>

#include "recorder/Recorder.h"
#include "support/Golden.h"
#include "sync/board/BoardSession.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

/// One board operation, the library call it makes, and whether a lost board refuses it.
struct Operation {
    const char* name;
    std::function<RETSTATUS(BoardSession&)> run;
    const char* libraryCall;
    bool lostRefuses;
};

int g_out[3];
char g_memory[256];
char* g_buffer = g_memory;

const Operation kOperations[] = {
    {"SetStrobeControlledByTrigger",
     [](BoardSession& m) {
         return m.SetStrobeControlledByTrigger(CONTROL_ROUTE_1, STROBE_STATE_4);
     },
     "zr3DOpenOrCloseStrobeFlicker(B1, 1, 4)", true},
    {"EnableBlueLaser", [](BoardSession& m) { return m.EnableBlueLaser(LASER_WORK_MODE_3, true); },
     "zr3DSetLaserEnable(B1, 1, 3)", true},
    {"EnableIRLaser", [](BoardSession& m) { return m.EnableIRLaser(true); },
     "zr3DSetIRLaserEnable(B1, 1)", true},
    {"SetIRLaserBrightnessLevel", [](BoardSession& m) { return m.SetIRLaserBrightnessLevel(7); },
     "zr3DSetIRLaserLevel(B1, 7)", false},
    {"SetVideoTriggerPeriod", [](BoardSession& m) { return m.SetVideoTriggerPeriod(25); },
     "zr3DSetVideoTriggerPeriod(B1, 25)", true},
    {"GetVideoTriggerPeriod", [](BoardSession& m) { return m.GetVideoTriggerPeriod(g_out[0]); },
     "zr3DQueryTriggerPeriod(B1)", true},
    {"SetProjectorBrightness", [](BoardSession& m) { return m.SetProjectorBrightness(80); },
     "zr3DSetProjectorBrightness(B1, 80)", true},
    {"GetProjectorBrightness", [](BoardSession& m) { return m.GetProjectorBrightness(g_out[0]); },
     "zr3DQueryProjectorBrightness(B1)", true},
    {"EnableVideoTrigger",
     [](BoardSession& m) { return m.EnableVideoTrigger(TRIGGER_LASER_LINES_COLOR, true); },
     "zr3DSetVideoTrigleMode(B1, 6)", true},
    {"Project", [](BoardSession& m) { return m.Project(PROJECT_PATTERN_2); }, "zr3DProject(B1, 2)",
     true},
    {"SetStrobeDutioRatio", [](BoardSession& m) { return m.SetStrobeDutioRatio(1, 2, 3); },
     "zr3DSetLedDutioRatio(B1, 41, 1, 2, 3)", true},
    {"GetStrobeDutioRatio",
     [](BoardSession& m) { return m.GetStrobeDutioRatio(g_out[0], g_out[1], g_out[2]); },
     "zr3DQueryLedDutioRatio(B1, 48)", true},
    {"SetLaserLineDutioRatio", [](BoardSession& m) { return m.SetLaserLineDutioRatio(60); },
     "zr3DSetDutioRatio(B1, 49, 60)", true},
    {"GetLaserLineDutioRatio", [](BoardSession& m) { return m.GetLaserLineDutioRatio(g_out[0]); },
     "zr3DQueryDutioRatio(B1, 50)", true},
    {"SetProjectDutioRatio", [](BoardSession& m) { return m.SetProjectDutioRatio(61); },
     "zr3DSetDutioRatio(B1, 51, 61)", true},
    {"GetProjectDutioRatio", [](BoardSession& m) { return m.GetProjectDutioRatio(g_out[0]); },
     "zr3DQueryDutioRatio(B1, 52)", true},
    {"SetIRLaserDutioRatio", [](BoardSession& m) { return m.SetIRLaserDutioRatio(62); },
     "zr3DSetDutioRatio(B1, 53, 62)", true},
    {"GetIRLaserDutioRatio", [](BoardSession& m) { return m.GetIRLaserDutioRatio(g_out[0]); },
     "zr3DQueryDutioRatio(B1, 54)", true},
    {"SetDistanceIndicate",
     [](BoardSession& m) { return m.SetDistanceIndicate(DISTANCE_STATUS_3); },
     "zr3DSetDistanceIndicateState(B1, 2)", true},
    {"WriteUserInfomation", [](BoardSession& m) { return m.WriteUserInfomation(2, "abc", 3); },
     "zr3DWriteUserInfomation(B1, 2, abc, 3)", true},
    {"ReadUserInfomation", [](BoardSession& m) { return m.ReadUserInfomation(2, g_buffer); },
     "zr3DReadUserInfomation(B1, 2)", true},
    {"GetStrobeWorkTime", [](BoardSession& m) { return m.GetStrobeWorkTime(g_out[0], g_out[1]); },
     "zr3DQueryLedWorkTime(B1, 0)", true},
    {"SetStrobeWorkTime", [](BoardSession& m) { return m.SetStrobeWorkTime(300, 400); },
     "zr3DSetLedWorkTime(B1, 0, 400)", false},
    {"SetLaserLineWorkTime", [](BoardSession& m) { return m.SetLaserLineWorkTime(500); },
     "zr3DSetWorkTime(B1, 82, 500)", false},
    {"GetLaserLineWorkTime", [](BoardSession& m) { return m.GetLaserLineWorkTime(g_out[0]); },
     "zr3DQueryWorkTime(B1, 83)", true},
    {"SetProjectWorkTime", [](BoardSession& m) { return m.SetProjectWorkTime(501); },
     "zr3DSetWorkTime(B1, 84, 501)", false},
    {"GetProjectWorkTime", [](BoardSession& m) { return m.GetProjectWorkTime(g_out[0]); },
     "zr3DQueryWorkTime(B1, 85)", true},
    {"SetIRLaserWorkTime", [](BoardSession& m) { return m.SetIRLaserWorkTime(502); },
     "zr3DSetWorkTime(B1, 86, 502)", false},
    {"GetIRLaserWorkTime", [](BoardSession& m) { return m.GetIRLaserWorkTime(g_out[0]); },
     "zr3DQueryWorkTime(B1, 87)", true},
};

std::string CallName(const char* libraryCall) {
    const std::string text = libraryCall;
    return text.substr(0, text.find('('));
}

class BoardOperations : public testing::Test {
protected:
    BoardOperations() { Recorder::Get().Reset(); }
    void Open() { ASSERT_EQ(m_board.InitProjector(""), STATUS_SUCCESS); }
    /// Marks the board as lost: a poll fails.
    void LoseBoard() {
        Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
        Poll();
    }
    bool Poll() {
        unsigned char first = 0;
        unsigned char second = 0;
        return m_board.PollStatus(first, second);
    }
    std::string Last() { return Recorder::Get().Calls().back(); }

    os::CriticalSection m_device;
    TriggerStarts m_starts;
    BoardSession m_board{m_device, m_starts};
};

class EveryBoardOperation : public BoardOperations,
                            public testing::WithParamInterface<Operation> {};

TEST_P(EveryBoardOperation, WithoutABoardIsNotConnected) {
    EXPECT_EQ(GetParam().run(m_board), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_P(EveryBoardOperation, MakesItsLibraryCallAndSucceeds) {
    Open();
    EXPECT_EQ(GetParam().run(m_board), STATUS_SUCCESS);
    EXPECT_EQ(Last(), GetParam().libraryCall);
}

TEST_P(EveryBoardOperation, FailsWhenTheLibraryRefuses) {
    Open();
    Recorder::Get().FailAlways(CallName(GetParam().libraryCall));
    EXPECT_EQ(GetParam().run(m_board), STATUS_FAILED);
}

TEST_P(EveryBoardOperation, OnALostBoardIsRefusedOrSentAsItsKindSays) {
    Open();
    LoseBoard();
    const std::string call = CallName(GetParam().libraryCall);
    EXPECT_EQ(GetParam().run(m_board), GetParam().lostRefuses ? STATUS_FAILED : STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count(call) == 0, GetParam().lostRefuses);
}

INSTANTIATE_TEST_SUITE_P(All, EveryBoardOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(BoardOperations, AMinusOneKeepsTheStrobeDutyLastAskedFor) {
    Open();
    support::Output output;
    EXPECT_EQ(m_board.SetStrobeDutioRatio(-1, 30, -1), STATUS_SUCCESS);
    EXPECT_TRUE(support::MatchesGolden("SetStrobeDutioRatio", "one of three", output.End()));
    EXPECT_EQ(Last(), "zr3DSetLedDutioRatio(B1, 41, 100, 30, 100)");
    EXPECT_EQ(m_board.SetStrobeDutioRatio(5, -1, 6), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DSetLedDutioRatio(B1, 41, 5, 30, 6)") << "30 was remembered";
}

TEST_F(BoardOperations, AStrobeDutyThatWasNotSentIsStillRemembered) {
    Open();
    Recorder::Get().FailNth("zr3DSetLedDutioRatio", 1);
    EXPECT_EQ(m_board.SetStrobeDutioRatio(1, 2, 3), STATUS_FAILED);
    EXPECT_EQ(m_board.SetStrobeDutioRatio(-1, -1, -1), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DSetLedDutioRatio(B1, 41, 1, 2, 3)");
}

TEST_F(BoardOperations, AStrobeDutyAskedForWhileTheBoardIsLostIsRemembered) {
    Open();
    LoseBoard();
    EXPECT_EQ(m_board.SetStrobeDutioRatio(1, 2, 3), STATUS_FAILED);
    ASSERT_TRUE(Poll());
    EXPECT_EQ(m_board.SetStrobeDutioRatio(-1, -1, -1), STATUS_SUCCESS) << "a good poll";
    EXPECT_EQ(Last(), "zr3DSetLedDutioRatio(B1, 41, 1, 2, 3)");
}

TEST_F(BoardOperations, ALaserLineWorkTimeIsRememberedAsTheInfraredLasers) {
    Open();
    EXPECT_EQ(m_board.SetLaserLineWorkTime(500), STATUS_SUCCESS);
    EXPECT_EQ(m_board.SettingsToRestore().irLaserWorkTime, 500);
    EXPECT_EQ(m_board.SettingsToRestore().laserLineWorkTime, 1000);
    EXPECT_EQ(m_board.SetIRLaserWorkTime(600), STATUS_SUCCESS);
    EXPECT_EQ(m_board.SettingsToRestore().irLaserWorkTime, 600);
}

TEST_F(BoardOperations, EverySetterRemembersWhatItWasAskedForAlsoWhenTheLibraryRefuses) {
    Open();
    for (const Operation& operation : kOperations) {
        Recorder::Get().FailAlways(CallName(operation.libraryCall));
        operation.run(m_board);
    }
    const RememberedSettings settings = m_board.SettingsToRestore();
    EXPECT_EQ(int{settings.strobeRoute}, 1);
    EXPECT_EQ(int{settings.strobeState}, 4);
    EXPECT_TRUE(settings.blueLaserEnable);
    EXPECT_EQ(int{settings.blueLaserMode}, 3);
    EXPECT_TRUE(settings.irLaserEnable);
    EXPECT_EQ(settings.irLaserLevel, 7);
    EXPECT_EQ(settings.triggerPeriod, 25);
    EXPECT_EQ(settings.projectorBrightness, 80);
    EXPECT_EQ(int{settings.triggerMode}, 6);
    EXPECT_EQ(int{settings.projectType}, 2);
    EXPECT_EQ(settings.strobeDuty, (std::array<int, 3>{1, 2, 3}));
    EXPECT_EQ(settings.laserLineDuty, 60);
    EXPECT_EQ(settings.projectorDuty, 61);
    EXPECT_EQ(settings.irLaserDuty, 62);
    EXPECT_EQ(int{settings.distanceState}, 2);
    EXPECT_EQ(settings.strobeWorkTime, (std::array<int, 2>{300, 400}));
    EXPECT_EQ(settings.projectorWorkTime, 501);
    EXPECT_EQ(settings.irLaserWorkTime, 502);
}

TEST_F(BoardOperations, AFreshSessionRemembersTheInitialState) {
    const RememberedSettings settings = m_board.SettingsToRestore();
    EXPECT_EQ(int{settings.strobeRoute}, 2);
    EXPECT_EQ(int{settings.strobeState}, 1);
    EXPECT_FALSE(settings.blueLaserEnable);
    EXPECT_EQ(int{settings.blueLaserMode}, 0);
    EXPECT_FALSE(settings.irLaserEnable);
    EXPECT_EQ(settings.irLaserLevel, 1);
    EXPECT_EQ(settings.triggerPeriod, 10);
    EXPECT_EQ(settings.projectorBrightness, 10);
    EXPECT_EQ(int{settings.triggerMode}, 5);
    EXPECT_EQ(int{settings.projectType}, 0);
    EXPECT_EQ(settings.strobeDuty, (std::array<int, 3>{100, 100, 100}));
    EXPECT_EQ(settings.laserLineDuty, 100);
    EXPECT_EQ(settings.projectorDuty, 100);
    EXPECT_EQ(settings.irLaserDuty, 100);
    EXPECT_EQ(int{settings.distanceState}, 0);
    EXPECT_EQ(settings.strobeWorkTime, (std::array<int, 2>{1000, 1000}));
    EXPECT_EQ(settings.projectorWorkTime, 1000);
    EXPECT_EQ(settings.laserLineWorkTime, 1000);
    EXPECT_EQ(settings.irLaserWorkTime, 1000);
}

TEST_F(BoardOperations, WhatAFailedOpenLeftIsTheBoardUntilItIsClosed) {
    Recorder::Get().LeaveHandlesOnFailure();
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(m_board.InitProjector(""), STATUS_PROJECTOR);
    EXPECT_EQ(m_board.Project(PROJECT_PATTERN_1), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DProject(B1, 1)");
    EXPECT_EQ(m_board.ReOpen(), STATUS_PROJECTOR);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev(B1)"), 1u) << "closed, not forgotten";
    m_board.ExitProjector();
    EXPECT_EQ(Recorder::Get().Handles(), 0u);
}

TEST_F(BoardOperations, WhatAFailedOpenForOneCallLeftIsClosedAtOnce) {
    Recorder::Get().LeaveHandlesOnFailure();
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(m_board.ResetBoard(false, true), STATUS_PROJECTOR);
    std::string version;
    EXPECT_EQ(m_board.GetFirewareVersion("A", version), STATUS_PROJECTOR);
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 2u);
    EXPECT_EQ(Recorder::Get().Handles(), 0u);
    EXPECT_EQ(Recorder::Get().Count("zr3DResetDevice"), 0u);
}

TEST_F(BoardOperations, TriggerModesAreTranslated) {
    Open();
    EXPECT_EQ(m_board.EnableVideoTrigger(CAMERA_TRIGGER_MODE{4}, true), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DSetVideoTrigleMode(B1, 6)");
    m_board.EnableVideoTrigger(CAMERA_TRIGGER_MODE{4}, false);
    EXPECT_EQ(Last(), "zr3DSetVideoTrigleMode(B1, 5)");
    m_board.EnableVideoTrigger(CAMERA_TRIGGER_MODE{2}, false);
    EXPECT_EQ(Last(), "zr3DSetVideoTrigleMode(B1, 5)");
    m_board.EnableVideoTrigger(CAMERA_TRIGGER_MODE{9}, true);
    EXPECT_EQ(Last(), "zr3DSetVideoTrigleMode(B1, 5)");
}

TEST_F(BoardOperations, DistanceStatesAreCrossedOver) {
    Open();
    const int expected[][2] = {{2, 3}, {3, 2}, {0, 0}, {7, 0}, {1, 1}};
    for (const auto& [state, sent] : expected) {
        m_board.SetDistanceIndicate(DISTANCESTATUS{state});
        EXPECT_EQ(Last(), "zr3DSetDistanceIndicateState(B1, " + std::to_string(sent) + ")");
    }
}

TEST_F(BoardOperations, ARouteOrStrobeStateWithoutABoardValueIsABadParameter) {
    EXPECT_EQ(m_board.SetStrobeControlledByTrigger(CONTROLROUTE{3}, STROBE_STATE_1),
              STATUS_NOT_CONNECTED)
        << "a missing board comes first";
    Open();
    EXPECT_EQ(m_board.SetStrobeControlledByTrigger(CONTROLROUTE{3}, STROBE_STATE_1),
              STATUS_PARAMETER);
    EXPECT_EQ(m_board.SetStrobeControlledByTrigger(CONTROL_ROUTE_0, STROBE_STATE{0}),
              STATUS_PARAMETER);
    EXPECT_EQ(Recorder::Get().Count("zr3DOpenOrCloseStrobeFlicker"), 0u);
}

TEST_F(BoardOperations, StrobeWorkTimesGoOutInTwoCallsAndStopAtARefusal) {
    Open();
    EXPECT_EQ(m_board.SetStrobeWorkTime(300, 400), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"zr3DInitHidDev(null, 3267, 5752, )", "zr3DSetLedWorkTime(B1, 1, 300)",
                     "zr3DSetLedWorkTime(B1, 0, 400)"}));
    Recorder::Get().FailNth("zr3DSetLedWorkTime", 1);
    EXPECT_EQ(m_board.SetStrobeWorkTime(500, 600), STATUS_FAILED);
    EXPECT_EQ(Last(), "zr3DSetLedWorkTime(B1, 1, 500)");
}

TEST_F(BoardOperations, BothStrobeWorkTimesAreAskedForEvenWhenTheFirstFails) {
    Open();
    Recorder::Get().SetValue("timeWithTexture", 11);
    Recorder::Get().SetValue("time", 22);
    int withTexture = 0;
    int without = 0;
    EXPECT_EQ(m_board.GetStrobeWorkTime(withTexture, without), STATUS_SUCCESS);
    EXPECT_EQ(withTexture, 11);
    EXPECT_EQ(without, 22);
    Recorder::Get().FailNth("zr3DQueryLedWorkTime", 1);
    EXPECT_EQ(m_board.GetStrobeWorkTime(withTexture, without), STATUS_FAILED);
    EXPECT_EQ(Recorder::Get().Count("zr3DQueryLedWorkTime"), 4u);
}

TEST_F(BoardOperations, UserMemoryIsFilledInTheCallersOwnBuffer) {
    Open();
    char memory[256] = {};
    char* buffer = memory;
    EXPECT_EQ(m_board.ReadUserInfomation(3, buffer), STATUS_SUCCESS);
    EXPECT_EQ(buffer, memory);
    EXPECT_EQ(memory[255], 'u');
}

TEST_F(BoardOperations, TheFirmwareQueryOpensTheBoardWhereItIsNotOpen) {
    std::string version;
    EXPECT_EQ(m_board.GetFirewareVersion("SN", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.2.3");
    EXPECT_EQ(m_board.GetFirewareVersion(nullptr, version), STATUS_SUCCESS) << "open by now";
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"zr3DInitHidDev(null, 3267, 5752, SN)",
                                              "zr3DQueryProjectorFirewareVersion(B1)",
                                              "zr3DQueryProjectorFirewareVersion(B1)"}));
    Recorder::Get().FailAlways("zr3DQueryProjectorFirewareVersion");
    EXPECT_EQ(m_board.GetFirewareVersion("SN", version), STATUS_FAILED);
}

TEST_F(BoardOperations, AFirmwareQueryWithoutABoardGivesTheResultOfTheOpen) {
    std::string version;
    EXPECT_EQ(m_board.GetFirewareVersion(nullptr, version), STATUS_PARAMETER);
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(m_board.GetFirewareVersion("SN", version), STATUS_PROJECTOR);
    EXPECT_EQ(Recorder::Get().Calls(), Calls{"zr3DInitHidDev(null, 3267, 5752, SN)"});
}

TEST_F(BoardOperations, AResetOfTheDeviceComesBeforeOneOfTheFpga) {
    Open();
    EXPECT_EQ(m_board.ResetBoard(true, true), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DResetDevice(B1)");
    EXPECT_EQ(m_board.ResetBoard(true, false), STATUS_SUCCESS);
    EXPECT_EQ(Last(), "zr3DResetFPGA(B1)");
    const auto before = Recorder::Get().Calls();
    EXPECT_EQ(m_board.ResetBoard(false, false), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls(), before) << "no board traffic";
    Recorder::Get().FailAlways("zr3DResetDevice");
    EXPECT_EQ(m_board.ResetBoard(false, true), STATUS_FAILED);
}

TEST_F(BoardOperations, AResetOpensAnyBoardWhereNoneIsOpen) {
    EXPECT_EQ(m_board.ResetBoard(false, false), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls(), Calls{"zr3DInitHidDev(null, 3267, 5752, )"});
}

TEST_F(BoardOperations, AResetWithoutABoardGivesTheResultOfTheOpen) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(m_board.ResetBoard(true, true), STATUS_PROJECTOR);
}

}  // namespace
}  // namespace Korvex3Sync::tests
