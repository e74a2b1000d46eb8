#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/Korvexctl.h"
#include "platform/os/FileName.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

class KorvexctlFileNames : public ::testing::Test {
protected:
    /// The path of a file whose name has letters of no single code page.
    std::filesystem::path File(const std::string& ending) const {
        return m_folder.Path() / os::PathOf("Köпа日" + ending);
    }

    static void ExpectDone(const std::vector<std::string>& arguments) {
        const ChildResult result = RunKorvexctl(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.error;
    }

    TemporaryFolder m_folder;
};

TEST_F(KorvexctlFileNames, OfAHeadFileALogAndAProfileMayHaveAnyLetters) {
    const std::string head = os::TextOf(File(".toml"));
    const std::string log = os::TextOf(File(".log"));
    const std::string profile = os::TextOf(File(".profile"));
    ExpectDone({"virtual", "new", head});
    ExpectDone({"--virtual=" + head, "--log", log, "profile", "save", profile});
    const ChildResult diff =
        RunKorvexctl({"--virtual=" + head, "profile", "diff", profile, "--json"});
    EXPECT_EQ(ParseJson(diff.output)["file"], profile);
    EXPECT_EQ(ParseJson(diff.output)["equal"], true) << diff.error;
    EXPECT_THAT(FileNames(m_folder.Path()),
                ::testing::UnorderedElementsAre("Köпа日.toml", "Köпа日.log", "Köпа日.profile"));
}

TEST_F(KorvexctlFileNames, OfAFolderMayHaveAnyLetters) {
    const std::string out = os::TextOf(File(""));
    ExpectDone({"--virtual", "scan", "--sets", "1", "--record", "--out", out});
    EXPECT_THAT(FileNames(File("")), Contains("scan.json"));
    ExpectDone({"--virtual=" + os::TextOf(File("") / "replay.toml"), "snap", "--out", out});
    EXPECT_THAT(FileNames(File("")), Contains("snap_1.png"));
    // The folder of a replay is named in the head file.
    const std::filesystem::path head = m_folder.Path() / "head.toml";
    WriteText(head, "[replay]\nfolder = \"Köпа日\"\n");
    ExpectDone({"--virtual=" + os::TextOf(head), "list"});
}

TEST_F(KorvexctlFileNames, AreShownAsTheyAre) {
    const ChildResult result = RunKorvexctl({"--virtual=" + os::TextOf(File(".toml")), "list"});
    EXPECT_THAT(result.error, HasSubstr("Köпа日.toml"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
