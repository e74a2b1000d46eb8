#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <thread>
#include <utility>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/ScanOverEarlierOne.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(ScanOverHead, SendsValuesThenLightThenTriggerAndSwitchesBothOff) {
    GivePeriod(20);
    Give("laser-line-duty", {40});
    Give("blue-laser", {3, 1});
    Give("ir-laser-level", {3});
    Give("ir-laser", {1});
    const Outcome outcome = Scan();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    EXPECT_THAT(Commands({"zr3DSetVideoTriggerPeriod", "zr3DSetDutioRatio", "zr3DSetLaserEnable",
                          "zr3DSetIRLaserLevel", "zr3DSetIRLaserEnable", "zr3DSetVideoTrigleMode"}),
                ElementsAre(AllOf(StartsWith("zr3DSetDutioRatio("), HasSubstr("40) = true")),
                            "zr3DSetIRLaserLevel(3) = true", "zr3DSetVideoTriggerPeriod(20) = true",
                            "zr3DSetLaserEnable(1, 3) = true", "zr3DSetIRLaserEnable(1) = true",
                            "zr3DSetVideoTrigleMode(6) = true", "zr3DSetVideoTrigleMode(5) = true",
                            "zr3DSetLaserEnable(0, 3) = true", "zr3DSetIRLaserEnable(0) = true"));
    ExpectHeadLeftDark();
}

TEST_F(ScanOverHead, PatternModesProjectInsteadOfTheLaserLines) {
    GiveMode(TRIGGER_PATTERN_COLOR);
    Give("projector-brightness", {35});
    Give("project", {2});
    EXPECT_EQ(Scan().code, ExitCode::Done);
    EXPECT_THAT(Commands({"zr3DSetProjectorBrightness"}),
                ElementsAre("zr3DSetProjectorBrightness(35) = true"));
    const auto shown = Commands({"zr3DProject"});
    ASSERT_GE(shown.size(), 2U);
    EXPECT_EQ(shown.front(), "zr3DProject(2) = true");
    EXPECT_EQ(shown.back(), "zr3DProject(0) = true");
    for (const std::string& laser : Commands({"zr3DSetLaserEnable"})) {
        EXPECT_THAT(laser, StartsWith("zr3DSetLaserEnable(0"));
    }
}

TEST_F(ScanOverHead, NoSetInTimeEndsTheScan) {
    m_options.timeoutSeconds = 0.5;
    LoseEveryFrame();
    const Outcome outcome = Scan();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::SetsMissing);
    EXPECT_THAT(outcome.message, HasSubstr("0 of 5 sets arrived"));
    EXPECT_EQ(outcome.figures["sets"]["delivered"], 0);
    EXPECT_TRUE(outcome.figures["sets_per_second"].is_null());
    ExpectHeadLeftDark();
}

TEST_F(ScanOverHead, TheTimeoutDoesNotCountTheTriggersThatASetWaitsFor) {
    // Without colour the first set is complete at the second trigger.
    GiveMode(TRIGGER_LASER_LINES);
    GivePeriod(600);
    m_options.timeoutSeconds = 0.5;
    m_options.end.sets = 1;
    EXPECT_EQ(Scan().code, ExitCode::Done);
}

TEST_F(ScanOverHead, ABoardThatStopsAnsweringIsNamed) {
    // The status is silent for its first polls; by then the scan is under way.
    m_options.timeoutSeconds = 3;
    LoseEveryFrame();
    std::thread board([this] {
        WaitForTriggers(1);
        EXPECT_TRUE(m_head->GetFaults().Fail("zr3DQueryCurrentStatus", 1'000'000));
    });
    const Outcome outcome = Scan();
    board.join();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::SetsMissing);
    EXPECT_THAT(outcome.message, HasSubstr("the board does not answer"));
    EXPECT_EQ(outcome.figures["board_lost"], true);
}

TEST_F(ScanOverHead, ARefusedSettingIsNamedAndNothingIsTriggered) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetLaserEnable", 1));
    const Outcome outcome = Scan();
    EXPECT_EQ(outcome.code, ExitCode::DeviceRefused);
    EXPECT_THAT(outcome.message, StartsWith("switch the laser lines on: Operate failed"));
    EXPECT_THAT(Commands({"zr3DSetVideoTrigleMode"}), IsEmpty());
}

TEST_F(ScanOverHead, ALightThatIsRefusedSwitchesTheOthersOff) {
    Give("ir-laser", {1});
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetIRLaserEnable", 1));
    EXPECT_EQ(Scan().code, ExitCode::DeviceRefused);
    EXPECT_THAT(Commands({"zr3DSetLaserEnable"}),
                ElementsAre("zr3DSetLaserEnable(1, 1) = true", "zr3DSetLaserEnable(0, 1) = true"));
}

TEST_F(ScanOverHead, ATriggerThatIsRefusedLeavesTheHeadDark) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetVideoTrigleMode", 1));
    EXPECT_EQ(Scan().code, ExitCode::DeviceRefused);
    ExpectHeadLeftDark();
}

TEST_F(ScanOverHead, AScanThatARefusalEndsTellsWhatIsLeftOn) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetVideoTrigleMode", 1'000));
    const Outcome outcome = Scan();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::DeviceRefused);
    EXPECT_THAT(outcome.message, StartsWith("switch the trigger on: "));
    EXPECT_THAT(outcome.message, HasSubstr("; not switched off: trigger"));
    EXPECT_EQ(outcome.figures["left_on"], nlohmann::json{"trigger"});
}

TEST_F(ScanOverHead, AnInterruptedScanOfAMuteBoardTellsWhatIsLeftOn) {
    m_options.end.sets = 1'000'000;
    std::thread person([this] {
        WaitForTriggers(5);
        EXPECT_TRUE(m_head->GetFaults().Order({virtual_head::FaultKind::BoardMute}));
        RaiseSignal(kInterrupt);
    });
    const Outcome outcome = Scan();
    person.join();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_THAT(outcome.message, StartsWith("interrupted: "));
    EXPECT_THAT(outcome.message, HasSubstr("; not switched off: trigger, laser lines"));
    EXPECT_EQ(outcome.figures["left_on"], (nlohmann::json{"trigger", "laser lines"}));
}

TEST_F(ScanOverHead, ABoardThatOpensAndIsMuteIsNotConnected) {
    ASSERT_TRUE(m_head->GetFaults().Order({virtual_head::FaultKind::BoardMute}));
    const Outcome outcome = Scan();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::NotConnected);
    EXPECT_EQ(outcome.message, "the board does not answer");
    EXPECT_THAT(Commands({"zr3DSetVideoTrigleMode"}), IsEmpty());
}

TEST_F(ScanOverHead, ABoardThatDoesNotOpenIsNotConnected) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DInitHidDev", 1));
    const Outcome outcome = Scan();
    EXPECT_EQ(outcome.code, ExitCode::NotConnected);
    EXPECT_THAT(outcome.message, HasSubstr("cannot connect: Connect projector failed"));
    EXPECT_THAT(Commands({"zr3DSetVideoTrigleMode"}), IsEmpty());
}

TEST_F(ScanOverEarlierOne, KeepsItWhenTheHeadRefusesToBegin) {
    GivePeriod(20);
    for (const char* call :
         {"zr3DSetVideoTriggerPeriod", "zr3DSetLaserEnable", "zr3DSetVideoTrigleMode"}) {
        ASSERT_TRUE(m_head->GetFaults().Fail(call, 1));
        EXPECT_EQ(Scan().code, ExitCode::DeviceRefused) << call;
        ExpectEarlierScan();
    }
}

TEST_F(ScanOverEarlierOne, KeepsItWhenNoSetComes) {
    m_options.timeoutSeconds = 0.5;
    LoseEveryFrame();
    const Outcome outcome = Scan();
    m_head->GetFaults().Clear();
    EXPECT_EQ(outcome.code, ExitCode::SetsMissing);
    EXPECT_EQ(outcome.figures["sets"]["delivered"], 0);
    ExpectEarlierScan();
}

TEST_F(ScanOverEarlierOne, RemovesItBeforeTheFirstPictureIsWritten) {
    bool first = true;
    const Outcome outcome = Scan([&](const std::filesystem::path& file, const auto& bytes) {
        if (std::exchange(first, false)) {
            EXPECT_THAT(FileNames(m_folder.Path()), ::testing::Each(StartsWith(".sets.csv.")));
        }
        korvexctl::StoreWhole(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    auto names = outcome.figures["files"].get<std::vector<std::string>>();
    names.emplace_back("scan.json");
    EXPECT_THAT(FileNames(m_folder.Path()), ::testing::UnorderedElementsAreArray(names));
}

TEST_F(ScanOverHead, AnInterruptLeavesTheHeadDark) {
    m_options.end.sets = 1'000'000;
    std::thread person([this] {
        WaitForTriggers(5);
        RaiseSignal(kInterrupt);
    });
    const Outcome outcome = Scan();
    person.join();
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_EQ(outcome.figures["interrupted"], true);
    ExpectHeadLeftDark();
}

}  // namespace

}  // namespace Korvex3Sync::tests
