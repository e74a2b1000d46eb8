#include "korvexctl/settings/Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/commands/SetCommand.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::AllSettings;
using korvexctl::CheckValue;
using korvexctl::Field;
using korvexctl::FieldKind;
using korvexctl::FindSetting;
using korvexctl::ReadAssignments;
using korvexctl::ReadValueText;
using korvexctl::Setting;
using korvexctl::SettingValue;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr Field kPercent{"", FieldKind::Whole, 0, 100};
constexpr Field kTenths{"", FieldKind::Tenths, 0.1, 25.5};
constexpr Field kSwitch{"", FieldKind::Switch};

double ValueOf(const Field& field, const std::string& text) {
    const auto read = ReadValueText(field, text);
    const auto* value = std::get_if<double>(&read);
    return value == nullptr ? std::numeric_limits<double>::quiet_NaN() : *value;
}

std::string WrongWith(const Field& field, const std::string& text) {
    const auto read = ReadValueText(field, text);
    const auto* wrong = std::get_if<std::string>(&read);
    return wrong == nullptr ? "" : *wrong;
}

TEST(SettingValues, ReadsWhatAPersonTypes) {
    EXPECT_EQ(ValueOf(kPercent, "60"), 60);
    EXPECT_EQ(ValueOf(kPercent, "0"), 0);
    EXPECT_EQ(ValueOf(kPercent, "100"), 100);
    EXPECT_EQ(ValueOf(kTenths, "8.5"), 8.5);
    EXPECT_EQ(ValueOf(kTenths, "25.5"), 25.5);
    EXPECT_EQ(ValueOf(kPercent, "59.9999999"), 60);
    EXPECT_EQ(ValueOf(kSwitch, "on"), 1);
    EXPECT_EQ(ValueOf(kSwitch, "false"), 0);
}

TEST(SettingValues, RefusesWhatTheDeviceCannotTake) {
    for (const char* text : {"101", "-1", "1.5", "nan", "inf", "1e99", "60x", "", " 60", "on"}) {
        EXPECT_THAT(WrongWith(kPercent, text), HasSubstr("0 to 100")) << text;
    }
    for (const char* text : {"0", "25.6", "8.55", "nan", "-0.1"}) {
        EXPECT_THAT(WrongWith(kTenths, text), HasSubstr("0.1 to 25.5 in steps of 0.1")) << text;
    }
    EXPECT_EQ(WrongWith(kSwitch, "1"), "\"1\" is not on or off");
    for (const char* text : {"0x10", "1e1", "+5", "5 "}) {
        EXPECT_EQ(WrongWith(kPercent, text),
                  "\"" + std::string(text) + "\" is not a whole number from 0 to 100");
    }
}

TEST(SettingValues, SaysWhichKindOfNumberIsWanted) {
    EXPECT_EQ(WrongWith(kPercent, "60.5"), "60.5 is not a whole number from 0 to 100");
    EXPECT_EQ(WrongWith(kPercent, "much"), "\"much\" is not a whole number from 0 to 100");
    EXPECT_EQ(WrongWith(kPercent, "101"), "101 is not in 0 to 100");
    EXPECT_EQ(WrongWith(kTenths, "8.55"), "8.55 is not a number from 0.1 to 25.5 in steps of 0.1");
    EXPECT_EQ(WrongWith(kTenths, "long"),
              "\"long\" is not a number from 0.1 to 25.5 in steps of 0.1");
}

TEST(SettingValues, EveryExposureReachesTheCameraAsItsOwnStep) {
    for (int step = 1; step <= 255; ++step) {
        const std::string text = std::to_string(step / 10) + "." + std::to_string(step % 10);
        // How the library makes a word of it: times ten, and cut.
        EXPECT_EQ(static_cast<int>(ValueOf(kTenths, text) * 10), step) << text;
    }
}

TEST(Settings, EachHasANameOfItsOwnAndARange) {
    std::set<std::string> names;
    for (const Setting& setting : AllSettings()) {
        EXPECT_TRUE(names.insert(setting.name).second) << setting.name;
        EXPECT_FALSE(setting.fields.empty()) << setting.name;
        EXPECT_THAT(korvexctl::RangeText(setting), Not(IsEmpty())) << setting.name;
        EXPECT_EQ(static_cast<bool>(setting.write), setting.cameraOrder < 0) << setting.name;
        EXPECT_EQ(FindSetting(setting.name), &setting);
        EXPECT_THAT(korvexctl::SettingsTable(), HasSubstr("  " + setting.name + ": "));
    }
    EXPECT_EQ(FindSetting("laser"), nullptr);
}

TEST(Settings, RangesNameUnitAndFields) {
    EXPECT_EQ(RangeText(*FindSetting("laser-line-duty")), "percent, 0 to 100");
    EXPECT_EQ(RangeText(*FindSetting("laser-line-work-time")), "us, 0 to 1000000");
    EXPECT_EQ(RangeText(*FindSetting("blue-laser")), "mode 0 to 3, enable on or off");
    EXPECT_EQ(RangeText(*FindSetting("exposure.3")), "ms, 0.1 to 25.5 in steps of 0.1");
}

TEST(Settings, RangesOfAProfileAreInItsNotation) {
    using korvexctl::Notation;
    EXPECT_EQ(RangeText(*FindSetting("blue-laser"), Notation::Profile),
              "mode 0 to 3, enable true or false");
    EXPECT_THAT(RangeText(*FindSetting("trigger-mode"), Notation::Profile),
                HasSubstr("\"off\", \"laser\""));
    EXPECT_THAT(korvexctl::SettingsTable(Notation::Profile), HasSubstr("heartbeat: true or false"));
}

TEST(Settings, AShortExposureWithoutGainOnlySelects) {
    using korvexctl::OnlySelects;
    EXPECT_TRUE(OnlySelects(0, 0.1, 0));
    EXPECT_TRUE(OnlySelects(0, 0.3, 0));
    EXPECT_FALSE(OnlySelects(0, 0.4, 0));
    EXPECT_FALSE(OnlySelects(0, 0.1, 1));
    EXPECT_FALSE(OnlySelects(1, 0.1, 0));
    EXPECT_THAT(FindSetting("exposure.0")->help, HasSubstr("with gain 0 no less than 0.4"));
}

std::string RefusalOfWords(const std::vector<std::string>& words) {
    try {
        ReadAssignments(words);
    } catch (const korvexctl::CommandError& error) {
        EXPECT_EQ(error.Code(), korvexctl::ExitCode::Usage);
        return error.what();
    }
    return "";
}

TEST(Settings, AssignmentsAreNamesFollowedByTheirValues) {
    const std::vector<std::string> words{
        "laser-line-duty", "60",          "blue-laser", "2", "on", "trigger-mode",
        "laser-color",     "strobe-duty", "1",          "2", "3"};
    const auto assignments = ReadAssignments(words);
    ASSERT_EQ(assignments.size(), 4U);
    EXPECT_EQ(assignments[0].setting->name, "laser-line-duty");
    EXPECT_EQ(assignments[1].value, (SettingValue{2, 1}));
    EXPECT_EQ(assignments[2].value, SettingValue{4});
    EXPECT_EQ(assignments[3].value, (SettingValue{1, 2, 3}));
}

TEST(Settings, AssignmentsThatDoNotAddUpAreRefused) {
    EXPECT_THAT(RefusalOfWords({"laser-line-dutty", "60"}),
                HasSubstr("did you mean laser-line-duty"));
    EXPECT_THAT(RefusalOfWords({"laser-line-duty"}), HasSubstr("takes 1 value: percent, 0 to 100"));
    EXPECT_THAT(RefusalOfWords({"strobe-duty", "1", "2"}), HasSubstr("takes 3 values"));
    EXPECT_THAT(RefusalOfWords({"laser-line-duty", "101"}), HasSubstr("101 is not in 0 to 100"));
    EXPECT_THAT(RefusalOfWords({"trigger-mode", "dark"}),
                HasSubstr("\"dark\" is not one of off, laser"));
    EXPECT_THAT(RefusalOfWords({"trigger-mode", "patern"}),
                HasSubstr("; did you mean pattern (see"));
    EXPECT_THAT(RefusalOfWords({"trigger-period", "5", "trigger-period", "6"}),
                HasSubstr("given twice"));
    EXPECT_THAT(RefusalOfWords({"trigger-period", "5", "6"}), HasSubstr("unknown setting \"6\""));
}

}  // namespace

}  // namespace Korvex3Sync::tests
