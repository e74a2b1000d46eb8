#include "korvexctl/scan/ScanSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Korvex3Sync/Cameras.h>
#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Light.h>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/head/ConnectedHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::Assignment;
using korvexctl::ExitCode;
using korvexctl::RequireSetting;
using korvexctl::ScanSettings;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

TEST(ScanSettings, TheCommandLineOverridesTheProfileAndLightIsOnlySwitched) {
    const std::vector<Assignment> profile{{&RequireSetting("laser-line-duty"), {60}},
                                          {&RequireSetting("gain.1"), {3}},
                                          {&RequireSetting("blue-laser"), {2, 0}},
                                          {&RequireSetting("ir-laser"), {1}},
                                          {&RequireSetting("trigger-mode"), {TRIGGER_PATTERN}}};
    const std::vector<Assignment> commandLine{{&RequireSetting("laser-line-duty"), {40}},
                                              {&RequireSetting("ir-laser"), {0}}};
    const ScanSettings settings = CombineSettings(profile, commandLine);
    EXPECT_EQ(settings.light.mode, TRIGGER_PATTERN);
    EXPECT_EQ(settings.light.laserMode, 2);
    EXPECT_FALSE(settings.light.infrared);
    ASSERT_EQ(settings.values.size(), 2U);
    EXPECT_EQ(settings.values[0].setting->name, "laser-line-duty");
    EXPECT_EQ(settings.values[0].value, korvexctl::SettingValue{40});
    EXPECT_EQ(settings.values[1].setting->name, "gain.1");
}

TEST(ScanSettings, AModeWithoutSetsAndAProjectionOfNothingSayNothing) {
    for (const int mode : {0, static_cast<int>(TRIGGER_SINGLE_COLOR)}) {
        const std::vector<Assignment> profile{
            {&RequireSetting("trigger-mode"), {static_cast<double>(mode)}},
            {&RequireSetting("project"), {0}}};
        const ScanSettings settings = CombineSettings(profile, {});
        EXPECT_EQ(settings.light.mode, TRIGGER_LASER_LINES_COLOR);
        EXPECT_EQ(settings.light.pattern, PROJECT_PATTERN_1);
        EXPECT_THAT(settings.values, IsEmpty());
    }
}

/// A head whose settings stay from one command to the next.
class ScanOverSetHead : public ::testing::Test {
protected:
    CommandResult Scan(std::vector<std::string> more = {}) {
        std::vector<std::string> words{"scan", "--sets", "3", "--timeout", "30"};
        words.insert(words.end(), more.begin(), more.end());
        return RunHere(words);
    }

    RequestedHead m_head{SmallHeadDescription()};
};

TEST_F(ScanOverSetHead, AScanUsesWhatSetWroteAndSaysSo) {
    ASSERT_EQ(RunHere({"set", "laser-line-duty",
                       "37",  "strobe-duty",
                       "11",  "12",
                       "13",  "projector-brightness",
                       "21",  "trigger-period",
                       "33",  "exposure.0",
                       "7.5", "gain.0",
                       "2",   "exposure.1",
                       "6.5", "strobe",
                       "2",   "3"})
                  .code,
              ExitCode::Done);
    const auto before = BoardChanges(*m_head);
    const CommandResult result = Scan();
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_THAT(result.output, HasSubstr("mode laser-color, laser mode 1\n"));
    EXPECT_THAT(result.output, HasSubstr("laser-line-duty 37 percent"));
    EXPECT_THAT(result.output, HasSubstr("strobe-duty 11 12 13 percent"));
    EXPECT_THAT(result.output, HasSubstr("exposure.0 7.5 ms,\n  gain.0 2, exposure.1 6.5 ms"));
    EXPECT_THAT(result.output, HasSubstr("trigger-period 33 ms"));
    EXPECT_THAT(result.output, Not(HasSubstr("projector-"))) << "not in this light";
    const nlohmann::json& settings = result.figures["settings"];
    EXPECT_EQ(settings["mode"], "laser-color");
    EXPECT_EQ(settings["laser_mode"], 1);
    EXPECT_TRUE(settings["pattern"].is_null());
    EXPECT_EQ(settings["infrared"], false);
    EXPECT_EQ(settings["given"], nlohmann::json::object());
    EXPECT_EQ(settings["values"]["trigger-period"], 33);
    EXPECT_EQ(settings["values"]["projector-brightness"], 21);
    // Light and trigger on, and off again: no other setting is touched.
    auto changes = BoardChanges(*m_head);
    changes.erase(changes.begin(), changes.begin() + static_cast<std::ptrdiff_t>(before.size()));
    std::erase_if(changes, [](const std::string& call) {
        return call.starts_with("zr3DSetHeartBeat") || call.starts_with("zr3DSetHeartbeat");
    });
    EXPECT_THAT(changes,
                ElementsAre("zr3DSetLaserEnable(1, 1) = true", "zr3DSetVideoTrigleMode(6) = true",
                            "zr3DSetVideoTrigleMode(5) = true", "zr3DSetLaserEnable(0, 1) = true",
                            "zr3DSetIRLaserEnable(0) = true"));
    EXPECT_EQ(RunHere({"get", "trigger-period", "exposure.0", "gain.0"}).output,
              "trigger-period 33 ms\nexposure.0 7.5 ms\ngain.0 2\n");
}

TEST_F(ScanOverSetHead, TheCommandLineGivesExposureAndGainOfEveryCamera) {
    const CommandResult result =
        Scan({"--exposure", "8.5", "--gain", "3", "--period", "20", "--laser-mode", "3",
              "--strobe-duty", "70", "--ir-level", "4"});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    const nlohmann::json& settings = result.figures["settings"];
    EXPECT_EQ(
        settings["given"],
        (nlohmann::json{{"exposure.0", 8.5},
                        {"exposure.1", 8.5},
                        {"gain.0", 3},
                        {"gain.1", 3},
                        {"ir-laser-level", 4},
                        {"strobe-duty", {{"texture", 70}, {"plain", 70}, {"with-texture", 70}}},
                        {"trigger-period", 20}}));
    EXPECT_EQ(settings["values"]["exposure.1"], 8.5);
    EXPECT_EQ(settings["laser_mode"], 3);
    EXPECT_EQ(settings["infrared"], true);
    EXPECT_THAT(result.output, HasSubstr("laser mode 3, with the infrared laser"));
}

TEST_F(ScanOverSetHead, AProfileIsSentAndTheCommandLineOverridesIt) {
    const TemporaryFolder folder;
    const auto profile = folder.Path() / "bench.toml";
    WriteText(profile,
              "laser-line-duty = 60\nexposure.0 = 4.5\ntrigger-period = 25\n"
              "trigger-mode = \"pattern\"\n");
    const CommandResult result = Scan({"--profile", profile.string(), "--period", "20"});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    const nlohmann::json& settings = result.figures["settings"];
    EXPECT_EQ(settings["mode"], "pattern");
    EXPECT_EQ(settings["values"]["laser-line-duty"], 60);
    EXPECT_EQ(settings["values"]["exposure.0"], 4.5);
    EXPECT_EQ(settings["values"]["trigger-period"], 20);
}

TEST_F(ScanOverSetHead, AProfileThatCannotBeSentIsRefusedBeforeTheLight) {
    const TemporaryFolder folder;
    const auto profile = folder.Path() / "bench.toml";
    WriteText(profile, "laser-line-duty = 101\n");
    CommandResult result = Scan({"--profile", profile.string()});
    EXPECT_EQ(result.code, ExitCode::ProfileRefused);
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty()) << "found out over a connected head";
    WriteText(profile, "exposure.2 = 5\n");
    result = Scan({"--profile", profile.string()});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, StartsWith("exposure.2: the head has 2 cameras"));
    EXPECT_THAT(m_head->GetJournal().Texts({"zr3DSetLaserEnable"}), IsEmpty());
}

TEST_F(ScanOverSetHead, AValueThatTheHeadDoesNotTakeEndsTheScan) {
    const CommandResult result = Scan({"--gain", "40"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, HasSubstr("gain.0 was set to 40 and reads back as "));
    EXPECT_THAT(m_head->GetJournal().Texts({"zr3DSetLaserEnable"}), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
