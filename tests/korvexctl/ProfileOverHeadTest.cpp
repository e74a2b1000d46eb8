#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/ProfileOverHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(ProfileOverHead, WhatIsSavedEqualsTheHead) {
    const CommandResult saved = Profile("save");
    ASSERT_EQ(saved.code, ExitCode::Done) << saved.message;
    EXPECT_EQ(saved.figures["settings"]["trigger-period"], 10);
    EXPECT_THAT(saved.figures["not_readable"], Contains("project"));
    const CommandResult diff = Profile("diff");
    EXPECT_EQ(diff.code, ExitCode::Done) << diff.message;
    EXPECT_THAT(diff.output, IsEmpty());
    EXPECT_EQ(diff.figures["equal"], true);
}

TEST_F(ProfileOverHead, AChangeShowsAsADifference) {
    ASSERT_EQ(Profile("save").code, ExitCode::Done);
    ASSERT_EQ(RunHere({"set", "laser-line-duty", "60", "strobe-duty", "1", "2", "3"}).code,
              ExitCode::Done);
    const CommandResult diff = Profile("diff");
    EXPECT_EQ(diff.code, ExitCode::Different);
    EXPECT_EQ(diff.output,
              "laser-line-duty: file 100 percent, head 60 percent\n"
              "strobe-duty: file 100 100 100 percent, head 1 2 3 percent\n");
    EXPECT_EQ(diff.figures["equal"], false);
    EXPECT_EQ(diff.figures["settings"]["laser-line-duty"],
              (nlohmann::json{{"file", 100}, {"head", 60}, {"equal", false}}));
    EXPECT_EQ(diff.figures["settings"]["trigger-period"]["equal"], true);
}

TEST_F(ProfileOverHead, LoadPutsTheHeadBack) {
    ASSERT_EQ(RunHere({"set", "laser-line-duty", "33", "trigger-period", "7"}).code,
              ExitCode::Done);
    ASSERT_EQ(Profile("save").code, ExitCode::Done);
    ASSERT_EQ(RunHere({"set", "laser-line-duty", "60", "trigger-period", "9"}).code,
              ExitCode::Done);
    const CommandResult load = Profile("load");
    EXPECT_EQ(load.code, ExitCode::Done) << load.message;
    EXPECT_EQ(load.figures["settings"]["trigger-period"]["value"], 7);
    EXPECT_EQ(Profile("diff").code, ExitCode::Done);
}

TEST_F(ProfileOverHead, LoadSendsWhatTheHeadCannotTellToo) {
    WriteProfileText(
        "trigger-mode = \"pattern\"\nproject = 1\nblue-laser = { mode = 3, enable = false }\n");
    EXPECT_EQ(Profile("load").code, ExitCode::Done);
    // The trigger last, whatever the order in the file.
    EXPECT_THAT(BoardChanges(*m_head),
                ElementsAre("zr3DSetLaserEnable(0, 3) = true", "zr3DProject(1) = true",
                            "zr3DSetVideoTrigleMode(2) = true"));
}

TEST_F(ProfileOverHead, WhatTheHeadCannotTellIsNoDifference) {
    WriteProfileText("project = 1\n");
    const CommandResult diff = Profile("diff");
    EXPECT_EQ(diff.code, ExitCode::Done);
    EXPECT_EQ(diff.output, "project: file 1, head not readable\n");
    EXPECT_EQ(diff.figures["settings"]["project"]["equal"], nullptr);
}

TEST_F(ProfileOverHead, OneBadValueAndNothingIsSent) {
    WriteProfileText("trigger-period = 5\nlaser-line-duty = 60\nprojector-brightness = 101\n");
    for (const char* action : {"load", "diff"}) {
        const CommandResult result = Profile(action);
        EXPECT_EQ(result.code, ExitCode::ProfileRefused);
        EXPECT_THAT(result.message, StartsWith(m_file.string() + ":3: projector-brightness: "));
    }
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty());
}

TEST_F(ProfileOverHead, ACameraThatTheHeadDoesNotHaveAndNothingIsSent) {
    WriteProfileText("trigger-period = 5\nexposure.3 = 5.0\ngain.3 = 1\n");
    EXPECT_EQ(Profile("load").code, ExitCode::DeviceRefused);
    EXPECT_EQ(Profile("diff").code, ExitCode::DeviceRefused);
    EXPECT_THAT(BoardChanges(*m_head), IsEmpty());
}

TEST_F(ProfileOverHead, ABoardThatDoesNotAnswerLeavesTheOldFile) {
    WriteProfileText("trigger-period = 5\n");
    EXPECT_TRUE(m_head->GetFaults().Fail("zr3DQueryTriggerPeriod", 1));
    const CommandResult result = Profile("save");
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, StartsWith("get trigger-period: "));
    EXPECT_EQ(ReadText(m_file), "trigger-period = 5\n");
}

TEST_F(ProfileOverHead, AFolderThatIsNotThereCannotBeSavedTo) {
    const CommandResult result =
        RunHere({"profile", "save", (m_folder.Path() / "none" / "bench.toml").string()});
    EXPECT_EQ(result.code, ExitCode::NotWritable);
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty()) << "found out over a connected head";
}

}  // namespace

}  // namespace Korvex3Sync::tests
