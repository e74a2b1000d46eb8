#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "project/SourceTree.h"
#include "support/ChildProcess.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string kScripts = KORVEX_SOURCE_DIR "/scripts/";

class Script : public ::testing::TestWithParam<const char*> {};

TEST_P(Script, SaysWhatItDoesAndDoesNothingElse) {
    const ChildResult help = RunChild({kScripts + GetParam(), "--help"});
    EXPECT_EQ(help.exitCode, 0) << help.error;
    EXPECT_THAT(help.error, IsEmpty());
    const std::string text = ReadProjectFile(std::string("scripts/") + GetParam());
    // The first line of its comment, below the line that names bash.
    const auto begin = text.find("\n# ") + 3;
    EXPECT_THAT(help.output, StartsWith(text.substr(begin, text.find('\n', begin) + 1 - begin)));
    EXPECT_EQ(help.output.find("set -"), std::string::npos) << "more than the comment";
}

TEST_P(Script, RefusesWhatItDoesNotTake) {
    const ChildResult result = RunChild({kScripts + GetParam(), "last", "more"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.error, HasSubstr("unexpected argument \"more\""));
}

INSTANTIATE_TEST_SUITE_P(All, Script,
                         ::testing::Values("abi", "bench", "check", "coverage", "demo", "fuzz",
                                           "package", "test"),
                         [](const auto& row) { return std::string(row.param); });

/// Runs a line of bash with scripts/lib/steps, as a user who is not root, in this folder.
ChildResult RunSteps(const fs::path& folder, const std::string& line) {
    fs::copy_file(kScripts + "lib/steps", folder / "steps", fs::copy_options::overwrite_existing);
    std::vector<std::string> command;
    if (::geteuid() == 0) {
        command = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    }
    for (const std::string& word :
         {std::string("bash"), std::string("-c"),
          "cd '" + folder.string() + "' && . ./steps && " + line + " && echo went on"}) {
        command.push_back(word);
    }
    return RunChild(command);
}

TEST(Scripts, SayWhatToDoAboutTheFilesOfAnotherUser) {
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::owner_all | fs::perms::others_all);
    fs::create_directories(folder.Path() / "build/release/lib");
    fs::permissions(folder.Path() / "build/release/lib",
                    fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                        fs::perms::others_exec);
    const ChildResult result = RunSteps(folder.Path(), "require_writable none build/release/lib");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.error,
                AllOf(StartsWith("build/release/lib belongs to "), HasSubstr("chown -R "),
                      HasSubstr(folder.Path().string() + "/build/release/lib\n")));
    EXPECT_EQ(RunSteps(folder.Path(), "build_preset release").exitCode, 1);
}

TEST(Scripts, GoOnInAFolderOfTheirUser) {
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::owner_all | fs::perms::others_all);
    const ChildResult result = RunSteps(
        folder.Path(), "mkdir -p own/below && ln -s /none own/link && require_writable own");
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(result.output, "went on\n");
}

}  // namespace

}  // namespace Korvex3Sync::tests
