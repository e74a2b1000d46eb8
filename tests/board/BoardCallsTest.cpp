#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <set>

#include "board/EveryCall.h"
#include "board/OpenBoard.h"
#include "platform/board/protocol/Commands.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using namespace zr3DHandiDLPdev;
using testing::ElementsAre;
using virtual_head::BoardState;
using virtual_head::HeadDescription;

class BoardCalls : public testing::Test {
protected:
    RequestedHead m_head;
    OpenedBoard m_board;
    void* m_handle = m_board.handle;

    BoardState State() { return m_head->Board().State(); }
};

TEST(EveryCall, LeavesOutNoFunctionOfTheCommands) {
    std::set<std::string> called{"zr3DQueryFirmwareVersionFast"};
    for (const BoardCall& each : EveryCall()) {
        called.insert(each.function);
    }
    std::set<std::string> commands;
    for (const CommandInfo& info : AllCommands()) {
        commands.insert(info.function);
    }
    EXPECT_EQ(called, commands);
}

TEST_F(BoardCalls, AllSucceedAndStandInTheJournalOnceEach) {
    for (const BoardCall& each : EveryCall()) {
        m_head->GetJournal().Clear();
        EXPECT_TRUE(each.call(m_handle)) << each.function;
        EXPECT_THAT(m_head->GetJournal().Texts(), ElementsAre(each.Journal(true)));
    }
}

TEST_F(BoardCalls, AllFailWhenAFaultIsOrderedAndStandInTheJournalOnceEach) {
    for (const BoardCall& each : EveryCall()) {
        m_head->GetJournal().Clear();
        ASSERT_TRUE(m_head->GetFaults().Fail(each.function, 1));
        EXPECT_FALSE(each.call(m_handle)) << each.function;
        EXPECT_THAT(m_head->GetJournal().Texts(), ElementsAre(each.Journal(false)));
        EXPECT_TRUE(each.call(m_handle)) << each.function << " after the fault";
    }
}

TEST_F(BoardCalls, SettersReachTheBoard) {
    EXPECT_TRUE(zr3DEnableHeartbeat(m_handle, true));
    EXPECT_TRUE(zr3DOpenOrCloseStrobeFlicker(m_handle, TRIGGERROUTE{0}, MASK_STROBE_STATE{4}));
    EXPECT_TRUE(zr3DSetLaserEnable(m_handle, true, LASERWORKMODE{3}));
    EXPECT_TRUE(zr3DSetIRLaserEnable(m_handle, true));
    EXPECT_TRUE(zr3DSetIRLaserLevel(m_handle, 9));
    EXPECT_TRUE(zr3DProject(m_handle, PROJECTTYPE{2}));
    EXPECT_TRUE(zr3DSetVideoTrigleMode(m_handle, MASK_TRIGGER_MODE{5}));
    EXPECT_TRUE(zr3DSetDistanceIndicateState(m_handle, DISTANCEINDICATE{3}));
    EXPECT_TRUE(zr3DSetLedWorkTime(m_handle, true, 11));
    EXPECT_TRUE(zr3DSetLedWorkTime(m_handle, false, 12));
    const BoardState state = State();
    EXPECT_TRUE(state.heartbeat);
    EXPECT_EQ(state.strobeRoute, 0);
    EXPECT_EQ(state.strobeState, 4);
    EXPECT_TRUE(state.laserEnable);
    EXPECT_EQ(state.laserMode, 3);
    EXPECT_TRUE(state.irLaserEnable);
    EXPECT_EQ(state.irLaserLevel, 9);
    EXPECT_EQ(state.projectType, 2);
    EXPECT_EQ(state.triggerMode, 5);
    EXPECT_EQ(state.distanceState, 3);
    EXPECT_THAT(state.strobeWorkTime, ElementsAre(11, 12));
    EXPECT_TRUE(zr3DSetLaserEnable(m_handle, false, LASERWORKMODE{0}));
    EXPECT_TRUE(zr3DSetIRLaserEnable(m_handle, false));
    EXPECT_TRUE(zr3DEnableHeartbeat(m_handle, false));
    EXPECT_FALSE(State().laserEnable);
    EXPECT_FALSE(State().irLaserEnable);
    EXPECT_FALSE(State().heartbeat);
}

TEST_F(BoardCalls, TakeTheNumbersOfTheApplicationAsTheyAre) {
    for (const int number : {INT_MIN, -1, 0, 101, INT_MAX}) {
        EXPECT_TRUE(zr3DSetIRLaserLevel(m_handle, number));
        EXPECT_EQ(State().irLaserLevel, number);
        EXPECT_TRUE(zr3DProject(m_handle, static_cast<PROJECTTYPE>(number)));
        EXPECT_EQ(State().projectType, number);
        EXPECT_TRUE(zr3DSetVideoTriggerPeriod(m_handle, number));
        EXPECT_EQ(State().triggerPeriod, number);
    }
}

struct ValueOfTheBoard {
    const char* name;
    std::function<bool(void*, int)> set;
    std::function<bool(void*, int&)> query;
    std::function<int(const BoardState&)> value;
    int powerOn;
};

const std::vector<ValueOfTheBoard>& EveryValue() {
    const auto duty = [](const char* name, int set, int query, int BoardState::*member) {
        return ValueOfTheBoard{
            name, [set](void* h, int value) { return zr3DSetDutioRatio(h, set, value); },
            [query](void* h, int& value) { return zr3DQueryDutioRatio(h, query, value); },
            [member](const BoardState& state) { return state.*member; }, 100};
    };
    const auto time = [](const char* name, int set, int query, int BoardState::*member) {
        return ValueOfTheBoard{
            name, [set](void* h, int value) { return zr3DSetWorkTime(h, set, value); },
            [query](void* h, int& value) { return zr3DQueryWorkTime(h, query, value); },
            [member](const BoardState& state) { return state.*member; }, 1000};
    };
    const auto ledTime = [](const char* name, bool withTexture, std::size_t place) {
        return ValueOfTheBoard{
            name,
            [withTexture](void* h, int value) { return zr3DSetLedWorkTime(h, withTexture, value); },
            [withTexture](void* h, int& value) {
                return zr3DQueryLedWorkTime(h, withTexture, value);
            },
            [place](const BoardState& state) { return state.strobeWorkTime.at(place); }, 1000};
    };
    static const std::vector<ValueOfTheBoard> values{
        {"trigger period", zr3DSetVideoTriggerPeriod, zr3DQueryTriggerPeriod,
         [](const BoardState& state) { return state.triggerPeriod; }, 10},
        {"brightness", zr3DSetProjectorBrightness, zr3DQueryProjectorBrightness,
         [](const BoardState& state) { return state.projectorBrightness; }, 10},
        duty("laser line duty", 49, 50, &BoardState::laserLineDuty),
        duty("projector duty", 51, 52, &BoardState::projectorDuty),
        duty("IR laser duty", 53, 54, &BoardState::irLaserDuty),
        time("laser line time", 82, 83, &BoardState::laserLineWorkTime),
        time("projector time", 84, 85, &BoardState::projectorWorkTime),
        time("IR laser time", 86, 87, &BoardState::irLaserWorkTime),
        ledTime("strobe time with texture", true, 0),
        ledTime("strobe time without", false, 1),
    };
    return values;
}

TEST_F(BoardCalls, QueriesReadBackWhatWasSetAndNothingElseChanges) {
    int written = 20;
    for (const ValueOfTheBoard& each : EveryValue()) {
        int value = 0;
        EXPECT_TRUE(each.query(m_handle, value)) << each.name;
        EXPECT_EQ(value, each.powerOn) << each.name << ": no other setter may reach it";
        EXPECT_TRUE(each.set(m_handle, ++written)) << each.name;
        EXPECT_EQ(each.value(State()), written) << each.name;
        EXPECT_TRUE(each.query(m_handle, value)) << each.name;
        EXPECT_EQ(value, written) << each.name;
    }
}

TEST_F(BoardCalls, StrobeDutiesKeepTheirPlaces) {
    EXPECT_TRUE(zr3DSetLedDutioRatio(m_handle, 41, 11, 22, 33));
    EXPECT_THAT(State().strobeDuty, ElementsAre(11, 22, 33));
    int texture = 0;
    int ratio = 0;
    int ratioWithTexture = 0;
    EXPECT_TRUE(zr3DQueryLedDutioRatio(m_handle, 48, texture, ratio, ratioWithTexture));
    EXPECT_EQ(texture, 11);
    EXPECT_EQ(ratio, 22);
    EXPECT_EQ(ratioWithTexture, 33);
}

TEST_F(BoardCalls, SelectorsOfOtherFunctionsAreRefusedWithoutACommand) {
    m_head->GetJournal().Clear();
    int value = -7;
    for (const int selector : {-1, 0, 3, 4, 41, 48, 50, 82, 256 + 49, INT_MAX}) {
        EXPECT_FALSE(zr3DSetDutioRatio(m_handle, selector, 1)) << selector;
    }
    for (const int selector : {-1, 0, 2, 48, 49, 83, 256 + 50}) {
        EXPECT_FALSE(zr3DQueryDutioRatio(m_handle, selector, value)) << selector;
    }
    EXPECT_FALSE(zr3DSetLedDutioRatio(m_handle, 48, 1, 1, 1));
    EXPECT_FALSE(zr3DQueryLedDutioRatio(m_handle, 41, value, value, value));
    EXPECT_FALSE(zr3DSetWorkTime(m_handle, 83, 1));
    EXPECT_FALSE(zr3DQueryWorkTime(m_handle, 50, value));
    EXPECT_EQ(value, -7);
    EXPECT_TRUE(m_head->GetJournal().Texts().empty());
}

TEST_F(BoardCalls, StatusBytesComeInTheirOrder) {
    m_head->Board().SetStatus(0xFE, 0x80);
    unsigned char first = 0;
    unsigned char second = 0;
    EXPECT_TRUE(zr3DQueryCurrentStatus(m_handle, first, second));
    EXPECT_EQ(first, 0xFE);
    EXPECT_EQ(second, 0x80);
}

TEST_F(BoardCalls, QueriesThatFailLeaveTheirOutputsAlone) {
    auto& faults = m_head->GetFaults();
    for (const char* call : {"zr3DQueryCurrentStatus", "zr3DQueryTriggerPeriod",
                             "zr3DQueryLedDutioRatio", "zr3DQueryProjectorFirewareVersion"}) {
        ASSERT_TRUE(faults.Fail(call, 1));
    }
    unsigned char first = 0x55;
    unsigned char second = 0x66;
    EXPECT_FALSE(zr3DQueryCurrentStatus(m_handle, first, second));
    EXPECT_EQ(first, 0x55);
    EXPECT_EQ(second, 0x66);
    int values[3] = {-1, -2, -3};
    EXPECT_FALSE(zr3DQueryTriggerPeriod(m_handle, values[0]));
    EXPECT_FALSE(zr3DQueryLedDutioRatio(m_handle, 48, values[0], values[1], values[2]));
    EXPECT_THAT(values, ElementsAre(-1, -2, -3));
    std::string version = "as it was";
    EXPECT_FALSE(zr3DQueryProjectorFirewareVersion(m_handle, version));
    EXPECT_EQ(version, "as it was");
}

TEST_F(BoardCalls, ASetterThatFailsChangesNothing) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetIRLaserLevel", 2));
    EXPECT_FALSE(zr3DSetIRLaserLevel(m_handle, 8));
    EXPECT_FALSE(zr3DSetIRLaserLevel(m_handle, 8));
    EXPECT_EQ(State().irLaserLevel, BoardState{}.irLaserLevel);
    EXPECT_TRUE(zr3DSetIRLaserLevel(m_handle, 8));
    EXPECT_EQ(State().irLaserLevel, 8);
}

TEST_F(BoardCalls, ResetDevicePutsThePowerOnValuesBackAndKeepsTheUserMemory) {
    for (const ValueOfTheBoard& each : EveryValue()) {
        EXPECT_TRUE(each.set(m_handle, 77));
    }
    EXPECT_TRUE(zr3DSetLaserEnable(m_handle, true, LASERWORKMODE{2}));
    EXPECT_TRUE(zr3DEnableHeartbeat(m_handle, true));
    EXPECT_TRUE(zr3DSetVideoTrigleMode(m_handle, MASK_TRIGGER_MODE{1}));
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 0, "kept", 4));
    EXPECT_TRUE(zr3DResetDevice(m_handle));
    for (const ValueOfTheBoard& each : EveryValue()) {
        EXPECT_EQ(each.value(State()), each.powerOn) << each.name;
    }
    EXPECT_FALSE(State().laserEnable);
    EXPECT_FALSE(State().heartbeat);
    EXPECT_EQ(State().triggerMode, 5);
    std::array<char, 256> page;
    char* buffer = page.data();
    EXPECT_TRUE(zr3DReadUserInfomation(m_handle, 0, buffer));
    EXPECT_STREQ(buffer, "kept");
}

TEST_F(BoardCalls, ResetFpgaStopsTheTriggerAndKeepsTheRest) {
    EXPECT_TRUE(zr3DSetVideoTriggerPeriod(m_handle, 77));
    EXPECT_TRUE(zr3DSetVideoTrigleMode(m_handle, MASK_TRIGGER_MODE{1}));
    EXPECT_TRUE(zr3DResetFPGA(m_handle));
    EXPECT_EQ(State().triggerMode, 5);
    EXPECT_EQ(State().triggerPeriod, 77);
}

TEST(BoardFirmware, IsReadThroughAnOpenBoardAndWithoutOne) {
    HeadDescription description;
    description.firmware = "9.8.7-beta";
    description.boardSerial = "B-1";
    RequestedHead head(description);
    std::string version;
    EXPECT_TRUE(zr3DQueryFirmwareVersionFast("B-1", version));
    EXPECT_EQ(version, "9.8.7-beta");
    version.clear();
    EXPECT_TRUE(zr3DQueryFirmwareVersionFast("", version));
    EXPECT_EQ(version, "9.8.7-beta");
    OpenedBoard board("B-1");
    version.clear();
    EXPECT_TRUE(zr3DQueryProjectorFirewareVersion(board.handle, version));
    EXPECT_EQ(version, "9.8.7-beta");
    EXPECT_THAT(head->GetJournal().Texts(),
                ElementsAre("zr3DQueryFirmwareVersionFast(B-1) = true",
                            "zr3DQueryFirmwareVersionFast() = true",
                            "zr3DInitHidDev(3267, 5752, B-1) = true",
                            "zr3DQueryProjectorFirewareVersion() = true"));
}

TEST(BoardFirmware, WithoutAnOpenBoardFailsForAnotherSerialNullAndAFault) {
    RequestedHead head;
    std::string version = "as it was";
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast("another", version));
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast(std::string(10000, 's').c_str(), version));
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast(nullptr, version));
    ASSERT_TRUE(head->GetFaults().Fail("zr3DQueryFirmwareVersionFast", 1));
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast("", version));
    EXPECT_EQ(version, "as it was");
    EXPECT_THAT(head->GetJournal().Texts().front(),
                "zr3DQueryFirmwareVersionFast(another) = false");
    EXPECT_THAT(head->GetJournal().Texts().back(), "zr3DQueryFirmwareVersionFast() = false");
}

}  // namespace
}  // namespace Korvex3Sync::tests
