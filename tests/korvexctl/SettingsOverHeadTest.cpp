#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/ErrorIntoFile.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class SettingsOverHead : public ::testing::Test {
protected:
    virtual_head::Faults& Faults() { return m_head->GetFaults(); }

    RequestedHead m_head{SmallHeadDescription()};
};

TEST_F(SettingsOverHead, SetSendsInOrderAndShowsWhatIsReadBack) {
    const CommandResult result = RunHere({"set", "trigger-period", "20", "laser-line-duty", "60",
                                          "blue-laser", "2", "on", "trigger-mode", "laser-color"});
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_THAT(
        BoardChanges(*m_head),
        ElementsAre("zr3DSetVideoTriggerPeriod(20) = true", "zr3DSetDutioRatio(49, 60) = true",
                    "zr3DSetLaserEnable(1, 2) = true", "zr3DSetVideoTrigleMode(6) = true"));
    EXPECT_EQ(
        result.output,
        "trigger-period 20 ms\nlaser-line-duty 60 percent\n"
        "blue-laser set to 2 on, not readable\ntrigger-mode set to laser-color, not readable\n");
}

TEST_F(SettingsOverHead, EveryBoardSettingReachesTheBoard) {
    const CommandResult result = RunHere({"set",
                                          "projector-brightness",
                                          "1",
                                          "projector-duty",
                                          "2",
                                          "projector-work-time",
                                          "3",
                                          "laser-line-duty",
                                          "4",
                                          "laser-line-work-time",
                                          "5",
                                          "ir-laser-duty",
                                          "6",
                                          "ir-laser-work-time",
                                          "7",
                                          "ir-laser-level",
                                          "8",
                                          "strobe-duty",
                                          "9",
                                          "10",
                                          "11",
                                          "strobe-work-time",
                                          "12",
                                          "13",
                                          "strobe",
                                          "1",
                                          "3",
                                          "blue-laser",
                                          "2",
                                          "off",
                                          "ir-laser",
                                          "on",
                                          "project",
                                          "2",
                                          "distance",
                                          "3",
                                          "trigger-period",
                                          "14",
                                          "trigger-mode",
                                          "off"});
    EXPECT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_THAT(
        BoardChanges(*m_head),
        ElementsAre("zr3DSetProjectorBrightness(1) = true", "zr3DSetDutioRatio(51, 2) = true",
                    "zr3DSetWorkTime(84, 3) = true", "zr3DSetDutioRatio(49, 4) = true",
                    "zr3DSetWorkTime(82, 5) = true", "zr3DSetDutioRatio(53, 6) = true",
                    "zr3DSetWorkTime(86, 7) = true", "zr3DSetIRLaserLevel(8) = true",
                    "zr3DSetLedDutioRatio(41, 9, 10, 11) = true",
                    "zr3DSetLedWorkTime(1, 12) = true", "zr3DSetLedWorkTime(0, 13) = true",
                    "zr3DOpenOrCloseStrobeFlicker(1, 3) = true", "zr3DSetLaserEnable(0, 2) = true",
                    "zr3DSetIRLaserEnable(1) = true", "zr3DProject(2) = true",
                    "zr3DSetDistanceIndicateState(2) = true",
                    "zr3DSetVideoTriggerPeriod(14) = true", "zr3DSetVideoTrigleMode(5) = true"));
}

TEST_F(SettingsOverHead, TheHeartbeatIsSwitched) {
    EXPECT_EQ(RunHere({"set", "heartbeat", "on"}).code, ExitCode::Done);
    EXPECT_EQ(m_head->GetJournal().Texts({"zr3DEnableHeartbeat"}).front(),
              "zr3DEnableHeartbeat(1) = true");
}

TEST_F(SettingsOverHead, TheDocumentOfSetHasBothValues) {
    const nlohmann::json settings =
        RunHere({"set", "--json", "strobe-duty", "50", "60", "70", "project", "1"})
            .figures["settings"];
    const nlohmann::json duties{{"texture", 50}, {"plain", 60}, {"with-texture", 70}};
    EXPECT_EQ(settings["strobe-duty"]["set"], duties);
    EXPECT_EQ(settings["strobe-duty"]["value"], duties);
    EXPECT_EQ(settings["strobe-duty"]["unit"], "percent");
    EXPECT_EQ(settings["project"]["set"], 1);
    EXPECT_EQ(settings["project"]["value"], nullptr);
    EXPECT_EQ(settings["project"]["unit"], nullptr);
}

TEST_F(SettingsOverHead, GetShowsAllSettingsOfTheHead) {
    ASSERT_EQ(RunHere({"set", "laser-line-duty", "42"}).code, ExitCode::Done);
    const CommandResult result = RunHere({"get"});
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_THAT(result.output, HasSubstr("laser-line-duty 42 percent\n"));
    EXPECT_THAT(result.output, HasSubstr("project not readable\n"));
    const nlohmann::json& settings = result.figures["settings"];
    EXPECT_EQ(settings["laser-line-duty"],
              (nlohmann::json{{"value", 42},
                              {"unit", "percent"},
                              {"readable", true},
                              {"range", {{"low", 0}, {"high", 100}}}}));
    EXPECT_EQ(settings["project"]["value"], nullptr);
    EXPECT_EQ(settings["project"]["readable"], false);
    EXPECT_EQ(settings["ir-laser"]["range"], (nlohmann::json{{"values", {false, true}}}));
    EXPECT_EQ(settings["blue-laser"]["range"]["enable"],
              (nlohmann::json{{"values", {false, true}}}));
    EXPECT_EQ(settings["trigger-mode"]["range"]["words"][0], "off");
    // Two cameras: there is no third.
    EXPECT_TRUE(settings.contains("gain.1"));
    EXPECT_FALSE(settings.contains("gain.2"));
}

TEST_F(SettingsOverHead, GetShowsTheNamedOnesOnly) {
    EXPECT_EQ(RunHere({"get", "trigger-period", "projector-brightness"}).output,
              "trigger-period 10 ms\nprojector-brightness 10 percent\n");
}

TEST_F(SettingsOverHead, GetSaysWhatTheBoardDoesNotAnswer) {
    EXPECT_TRUE(Faults().Fail("zr3DQueryTriggerPeriod", 1));
    const CommandResult result = RunHere({"get", "trigger-period", "laser-line-duty"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, StartsWith("get trigger-period: "));
    EXPECT_EQ(result.output, "trigger-period unknown\nlaser-line-duty 100 percent\n");
    EXPECT_EQ(result.figures["settings"]["trigger-period"]["value"], nullptr);
}

TEST_F(SettingsOverHead, SetEndsAtTheSettingThatTheBoardRefuses) {
    EXPECT_TRUE(Faults().Fail("zr3DSetDutioRatio", 1));
    const CommandResult result =
        RunHere({"set", "projector-brightness", "5", "laser-line-duty", "60", "project", "1"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, StartsWith("set laser-line-duty: "));
    EXPECT_THAT(BoardChanges(*m_head), ElementsAre("zr3DSetProjectorBrightness(5) = true",
                                                   "zr3DSetDutioRatio(49, 60) = false"));
}

TEST_F(SettingsOverHead, BadInputReachesNoDevice) {
    for (const auto& words :
         {std::vector<std::string>{"set", "laser-line-duty", "101"},
          std::vector<std::string>{"set", "project", "1", "laser-line-dutty", "5"},
          std::vector<std::string>{"set", "exposure.0", "30", "gain.0", "1"},
          std::vector<std::string>{"set", "exposure.0", "0", "gain.0", "1"},
          std::vector<std::string>{"set", "gain.0", "64"},
          std::vector<std::string>{"get", "gian.0"}, std::vector<std::string>{"distance", "4"}}) {
        EXPECT_EQ(RunHere(words).code, ExitCode::Usage) << words[1];
    }
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty());
}

TEST_F(SettingsOverHead, ACameraThatTheHeadDoesNotHaveIsRefusedBeforeAnythingIsSent) {
    const CommandResult result = RunHere({"set", "project", "1", "exposure.2", "5", "gain.2", "1"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, HasSubstr("exposure.2: the head has 2 cameras"));
    EXPECT_THAT(BoardChanges(*m_head), IsEmpty());
    EXPECT_EQ(RunHere({"get", "gain.3"}).code, ExitCode::DeviceRefused);
}

TEST_F(SettingsOverHead, ExposureAndGainGoInOneWord) {
    const CommandResult result =
        RunHere({"set", "exposure.1", "8.5", "project", "1", "gain.1", "3"});
    EXPECT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_EQ(result.output, "exposure.1 8.5 ms\nproject set to 1, not readable\ngain.1 3\n");
    EXPECT_EQ(result.figures["settings"]["exposure.1"]["value"], 8.5);
    std::uint64_t sent = 0;
    for (const virtual_head::JournalEntry& entry : m_head->GetJournal().Entries()) {
        if (entry.call == "SetCameraIntParam" && entry.arguments.ends_with(", 3413")) {
            EXPECT_EQ(entry.result, "true");
            sent += entry.count;  // equal calls in a row are one entry
        }
    }
    EXPECT_EQ(sent, 1U);
}

TEST_F(SettingsOverHead, TheHalfThatIsNotGivenStays) {
    ASSERT_EQ(RunHere({"set", "exposure.0", "8.5", "gain.0", "3"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"set", "exposure.0", "2.1"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"get", "exposure.0", "gain.0"}).output, "exposure.0 2.1 ms\ngain.0 3\n");
    EXPECT_EQ(RunHere({"set", "gain.0", "7"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"get", "exposure.0", "gain.0"}).output, "exposure.0 2.1 ms\ngain.0 7\n");
}

TEST_F(SettingsOverHead, AGainThatTheCameraRefusesIsFoundWhenItIsReadBack) {
    const CommandResult result = RunHere({"set", "exposure.0", "5", "gain.0", "40"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_EQ(result.message,
              "gain.0 was set to 40 and reads back as 0 (the camera takes no gain above 16)");
    // Looking for the limit changed nothing.
    EXPECT_EQ(RunHere({"get", "exposure.0", "gain.0"}).output, "exposure.0 5 ms\ngain.0 0\n");
    EXPECT_EQ(result.figures["settings"]["gain.0"]["set"], 40);
    EXPECT_EQ(result.figures["settings"]["gain.0"]["value"], 0);
}

TEST(KorvexctlSettings, AGainBelowThoseOfTheCameraIsExplained) {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.gainLow = 5;
    const RequestedHead head(description);
    ASSERT_EQ(RunHere({"set", "exposure.0", "5", "gain.0", "9"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"set", "gain.0", "2"}).message,
              "gain.0 was set to 2 and reads back as 9 (the camera takes no gain below 5)");
}

/// What a command itself says on standard error.
std::string WarningOf(const std::vector<std::string>& words, CommandResult& result) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "error";
    {
        const ErrorIntoFile errorIntoFile(file);
        result = RunHere(words);
    }
    std::istringstream lines(ReadText(file));
    std::string said;
    for (std::string line; std::getline(lines, line);) {
        said += line.starts_with("korvexctl: ") ? line + '\n' : "";
    }
    return said;
}

TEST_F(SettingsOverHead, LightAndTriggerThatStayOnAreWarnedOf) {
    CommandResult result;
    EXPECT_EQ(WarningOf({"set", "blue-laser", "1", "on", "trigger-mode", "laser"}, result),
              "korvexctl: WARNING: on after this command: laser lines, trigger; look away from the "
              "head. Switch off with: korvexctl set trigger-mode off blue-laser 1 off\n");
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_EQ(result.figures["left_on"], nlohmann::json::array({"laser lines", "trigger"}));
    EXPECT_EQ(WarningOf({"set", "trigger-mode", "off", "blue-laser", "1", "off"}, result), "");
    EXPECT_EQ(result.figures["left_on"], nlohmann::json::array());
    EXPECT_THAT(WarningOf({"set", "ir-laser", "on"}, result), HasSubstr("infrared laser"));
    EXPECT_EQ(WarningOf({"set", "trigger-mode", "single-color", "project", "1"}, result), "")
        << "one frame, and disconnecting ends the projection";
}

TEST_F(SettingsOverHead, AlsoWhenALaterSettingIsRefusedAndOnlyOfThoseThatWereSent) {
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DSetDistanceIndicateState", 1));
    CommandResult result;
    EXPECT_THAT(
        WarningOf({"set", "blue-laser", "2", "on", "distance", "1", "trigger-mode", "laser"},
                  result),
        HasSubstr("on after this command: laser lines; "));
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_EQ(result.figures["left_on"], nlohmann::json::array({"laser lines"}));
}

TEST_F(SettingsOverHead, AnExposureThatOnlySelectsACameraIsExplained) {
    const std::string why =
        " (with gain 0, an exposure.0 of 0.1 to 0.3 ms only selects a camera; give at least 0.4, "
        "or a gain)";
    const CommandResult both = RunHere({"set", "exposure.0", "0.3", "gain.0", "0"});
    EXPECT_EQ(both.code, ExitCode::DeviceRefused);
    EXPECT_EQ(both.message, "exposure.0 was set to 0.3 ms and reads back as 5 ms" + why);
    // The gain that the camera has counts as well.
    EXPECT_EQ(RunHere({"set", "exposure.0", "0.1"}).message,
              "exposure.0 was set to 0.1 ms and reads back as 5 ms" + why);
    EXPECT_EQ(RunHere({"set", "exposure.0", "0.2", "gain.0", "3"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"set", "gain.0", "0"}).message,
              "gain.0 was set to 0 and reads back as 3" + why);
}

TEST_F(SettingsOverHead, ShortExposuresAreTakenWhereTheySelectNothing) {
    EXPECT_EQ(RunHere({"set", "exposure.0", "0.4", "gain.0", "0"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"set", "exposure.0", "0.1", "gain.0", "1"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"set", "exposure.1", "0.1", "gain.1", "0"}).code, ExitCode::Done);
}

TEST_F(SettingsOverHead, DistanceSetsTheLights) {
    const CommandResult result = RunHere({"distance", "1"});
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_THAT(BoardChanges(*m_head), ElementsAre("zr3DSetDistanceIndicateState(1) = true"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
