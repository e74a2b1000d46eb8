#include "korvexctl/settings/ProfileFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/cli/ExitCodes.h"
#include "support/CaseName.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::AllSettings;
using korvexctl::Field;
using korvexctl::FieldKind;
using korvexctl::ParseProfile;
using korvexctl::Profile;
using korvexctl::ProfileError;
using korvexctl::Reading;
using korvexctl::Setting;
using korvexctl::SettingValue;
using ::testing::HasSubstr;
using ::testing::Not;

Profile Parsed(const std::string& text) {
    auto result = ParseProfile(text);
    if (const auto* error = std::get_if<ProfileError>(&result)) {
        ADD_FAILURE() << error->line << ": " << error->message;
        return {};
    }
    return std::get<Profile>(result);
}

ProfileError Wrong(const std::string& text) {
    const auto result = ParseProfile(text);
    const auto* error = std::get_if<ProfileError>(&result);
    EXPECT_NE(error, nullptr) << "accepted: " << text;
    return error == nullptr ? ProfileError{} : *error;
}

/// A value that differs from one end of the range to the other.
SettingValue SomeValue(const Setting& setting) {
    SettingValue value;
    for (const Field& field : setting.fields) {
        value.push_back(field.kind == FieldKind::Switch ? 1
                        : field.kind == FieldKind::Word ? field.words.back().value
                                                        : field.high);
    }
    return value;
}

TEST(ProfileFile, WhatIsWrittenIsReadBack) {
    std::vector<Reading> readings;
    for (const Setting& setting : AllSettings()) {
        readings.push_back({&setting, STATUS_SUCCESS, SomeValue(setting)});
    }
    const Profile profile = Parsed(WriteProfile(readings));
    ASSERT_EQ(profile.settings.size(), readings.size());
    for (std::size_t i = 0; i < readings.size(); ++i) {
        EXPECT_EQ(profile.settings[i].setting, readings[i].setting);
        EXPECT_EQ(profile.settings[i].value, readings[i].value) << readings[i].setting->name;
    }
}

TEST(ProfileFile, WhatIsNotKnownIsAComment) {
    const Setting& project = *korvexctl::FindSetting("project");
    const std::vector<Reading> readings{{&project, STATUS_NOT_SUPPORTED, {}}};
    const std::string text = WriteProfile(readings);
    EXPECT_THAT(text, HasSubstr("# unknown: the head does not report project"));
    EXPECT_TRUE(Parsed(text).settings.empty());
}

TEST(ProfileFile, CommentsSayUnitAndRange) {
    const Setting& duty = *korvexctl::FindSetting("laser-line-duty");
    const std::vector<Reading> readings{{&duty, STATUS_SUCCESS, {60}}};
    EXPECT_THAT(WriteProfile(readings), HasSubstr("# percent, 0 to 100\nlaser-line-duty = 60\n"));
}

TEST(ProfileFile, CommentsNameWhatTheFileTakes) {
    const Setting& light = *korvexctl::FindSetting("ir-laser");
    const Setting& mode = *korvexctl::FindSetting("trigger-mode");
    const std::vector<Reading> readings{{&light, STATUS_SUCCESS, {1}},
                                        {&mode, STATUS_SUCCESS, SomeValue(mode)}};
    const std::string text = WriteProfile(readings);
    EXPECT_THAT(text, HasSubstr("# true or false\nir-laser = true\n"));
    EXPECT_THAT(text, HasSubstr("# \"off\", \"laser\", "));
    EXPECT_THAT(text, HasSubstr("trigger-mode = \"single-color\"\n"));
}

TEST(ProfileFile, AnEmptyTextIsAnEmptyProfile) {
    EXPECT_TRUE(Parsed("").settings.empty());
    EXPECT_TRUE(Parsed("# nothing\n").settings.empty());
}

TEST(ProfileFile, ANumberBesideAStepIsTheStep) {
    const Profile profile = Parsed("exposure.0 = 8.50000001\nexposure.1 = 25.49999999\n");
    ASSERT_EQ(profile.settings.size(), 2U);
    EXPECT_EQ(profile.settings[0].value, SettingValue{8.5});
    EXPECT_EQ(profile.settings[1].value, SettingValue{25.5});
}

TEST(ProfileFile, AWholeNumberIsAnExposureToo) {
    const Profile profile = Parsed("exposure.1 = 8\n\"exposure.0\" = 0.1\n[gain]\n1 = 3\n");
    ASSERT_EQ(profile.settings.size(), 3U);
    EXPECT_EQ(profile.settings[0].setting->name, "exposure.0");
    EXPECT_EQ(profile.settings[1].setting->name, "exposure.1");
    EXPECT_EQ(profile.settings[1].value, SettingValue{8});
    EXPECT_EQ(profile.settings[2].setting->name, "gain.1");
}

struct BadProfile {
    const char* text;
    int line;
    const char* message;
};

class BadProfiles : public ::testing::TestWithParam<BadProfile> {};

TEST_P(BadProfiles, AreRefusedWithTheLine) {
    const ProfileError error = Wrong(GetParam().text);
    EXPECT_EQ(error.line, GetParam().line) << error.message;
    EXPECT_THAT(error.message, HasSubstr(GetParam().message));
    EXPECT_THAT(error.message, Not(HasSubstr("\n")));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadProfiles,
    ::testing::Values(
        BadProfile{"laser-line-dutty = 60\n", 1, "did you mean laser-line-duty"},
        BadProfile{"\n\nlaser-line-duty = 101\n", 3, "101 is not in 0 to 100"},
        BadProfile{"laser-line-duty = 60.0\n", 1, "a whole number is expected"},
        BadProfile{"laser-line-duty = true\n", 1, "a whole number is expected"},
        BadProfile{"laser-line-duty = 9223372036854775807\n", 1, "is not in 0 to 100"},
        BadProfile{"ir-laser = 1\n", 1, "true or false is expected"},
        BadProfile{"trigger-mode = 1\n", 1, "a text in quotes is expected"},
        BadProfile{"trigger-mode = \"dark\"\n", 1, "\"dark\" is not one of off, laser"},
        BadProfile{"exposure.0 = nan\n", 1, "is not in 0.1 to 25.5"},
        BadProfile{"exposure.0 = 0\n", 1, "is not in 0.1 to 25.5"},
        BadProfile{"exposure.0 = 8.55\n", 1, "in steps of 0.1"},
        BadProfile{"exposure.4 = 8.5\n", 1, "unknown setting \"exposure.4\""},
        BadProfile{"exposure = 8.5\n", 1, "unknown setting \"exposure\""},
        BadProfile{"exposure = {}\n", 1, "unknown setting \"exposure\""},
        BadProfile{"strobe = 1\n", 1, "{ route = ..., state = ... }"},
        BadProfile{"strobe = { route = 1 }\n", 1, "strobe: missing key \"state\""},
        BadProfile{"strobe = { route = 1, state = 5 }\n", 1, "state: 5 is not in 1 to 4"},
        BadProfile{"strobe = { route = 1, state = 1, more = 1 }\n", 1, "unknown key"},
        BadProfile{"gain.0 = 1\n\"gain.0\" = 1\n", 2, "gain.0 is given twice"},
        BadProfile{"trigger-period = 5\ntrigger-period = 6\n", 2, "trigger-period"},
        BadProfile{"trigger-period = 5\nproject = 7\nx = 1\n", 2, "project: 7"},
        BadProfile{"\"a\\nb\" = 1\n", 1, "unknown setting \"a\\x0Ab\""},
        BadProfile{"trigger-period = \n", 1, ""}, BadProfile{"= \xff\xfe\n", 1, ""}),
    [](const auto& row) { return support::CaseName(row.param.text); });

std::string RefusalOf(const std::filesystem::path& file) {
    try {
        korvexctl::ReadProfileFile(file);
    } catch (const korvexctl::CommandError& error) {
        EXPECT_EQ(error.Code(), korvexctl::ExitCode::ProfileRefused);
        return error.what();
    }
    ADD_FAILURE() << file << " was accepted";
    return "";
}

TEST(ProfileFile, RefusalsNameFileAndLine) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "bench.toml";
    WriteText(file, "trigger-period = 5\nproject = 7\n");
    EXPECT_EQ(RefusalOf(file), file.string() + ":2: project: 7 is not in 0 to 2");
}

TEST(ProfileFile, AKeyOfManyPartsIsRefusedWithoutACrash) {
    std::string key = "a";
    for (int part = 1; part < 40000; ++part) {
        key += ".a";
    }
    const auto result = ParseProfile(key + " = 1");
    ASSERT_TRUE(std::holds_alternative<ProfileError>(result));
    EXPECT_EQ(std::get<ProfileError>(result).message, "a key has more than 8 dotted parts");
}

TEST(ProfileFile, FilesThatCannotBeReadAreRefused) {
    const TemporaryFolder folder;
    EXPECT_THAT(RefusalOf(folder.Path() / "none.toml"), HasSubstr("No such file"));
    EXPECT_THAT(RefusalOf(folder.Path()), HasSubstr(folder.Path().string() + ": "));
    const auto large = folder.Path() / "large.toml";
    WriteText(large, std::string((1U << 20U) + 1, '#'));
    EXPECT_THAT(RefusalOf(large), HasSubstr("larger than 1 MiB"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
