#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/Korvexctl.h"
#include "support/Environment.h"
#include "virtual_head/Request.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kUsageError = 2;
constexpr int kNotWritable = 6;
constexpr int kDiskFull = 7;

class KorvexctlVirtualNew : public ::testing::Test {
protected:
    ChildResult New(std::vector<std::string> arguments, ChildOptions options = {}) const {
        arguments.insert(arguments.begin(), {"virtual", "new"});
        return RunKorvexctl(arguments, std::move(options));
    }

    void ExpectRefusedStream(const std::string& stream) const {
        const ChildResult refused = New({stream});
        EXPECT_EQ(refused.exitCode, kNotWritable);
        EXPECT_THAT(refused.error, HasSubstr("is not a regular file; --force writes to it"));
        EXPECT_THAT(refused.output, IsEmpty());
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "bench.toml";
};

TEST_F(KorvexctlVirtualNew, WritesAFileThatAHeadCanBeMadeOf) {
    const ChildResult result = New({m_file.string()});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.output, HasSubstr("--virtual=" + m_file.string()));
    EXPECT_EQ(ReadText(m_file), virtual_head::HeadFileText());
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("bench.toml"));
    const ChildResult list = RunKorvexctl({"--virtual=" + m_file.string(), "list"});
    EXPECT_EQ(list.exitCode, 0) << list.error;
    EXPECT_THAT(list.output, HasSubstr("camera KV00A1001  1280 x 1024  colour"));
}

TEST_F(KorvexctlVirtualNew, LeavesAFileAloneUnlessForced) {
    WriteText(m_file, "mine");
    const ChildResult refused = New({m_file.string(), "--json"});
    EXPECT_EQ(refused.exitCode, kNotWritable);
    EXPECT_THAT(refused.error, HasSubstr("already exists; --force replaces it"));
    EXPECT_EQ(ParseJson(refused.output)["error"]["exit_code"], kNotWritable);
    EXPECT_EQ(ReadText(m_file), "mine");

    const ChildResult forced = New({m_file.string(), "--force", "--json"});
    EXPECT_EQ(forced.exitCode, 0) << forced.error;
    EXPECT_EQ(ParseJson(forced.output)["file"], m_file.string());
    EXPECT_EQ(ReadText(m_file), virtual_head::HeadFileText());
}

TEST_F(KorvexctlVirtualNew, DoesNotFollowALinkThatLeadsNowhere) {
    std::filesystem::create_symlink(m_folder.Path() / "elsewhere", m_file);
    EXPECT_EQ(New({m_file.string()}).exitCode, kNotWritable);
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("bench.toml"));
}

TEST_F(KorvexctlVirtualNew, WritesToAStreamWhenForcedOnly) {
    ExpectRefusedStream(NothingFile());
    const ChildResult forced = New({NothingFile(), "--force"});
    EXPECT_EQ(forced.exitCode, 0) << forced.error;
    EXPECT_FALSE(std::filesystem::is_regular_file(NothingFile())) << "it was replaced";
}

TEST_F(KorvexctlVirtualNew, WritesToThePathOfStandardOutputWhenForcedOnly) {
    ExpectRefusedStream("/dev/stdout");
    const ChildResult forced = New({"/dev/stdout", "--force"});
    EXPECT_EQ(forced.exitCode, 0) << forced.error;
    EXPECT_EQ(forced.output, virtual_head::HeadFileText());
}

TEST_F(KorvexctlVirtualNew, StandardOutputThatIsAFileIsWrittenToAndNotReplaced) {
    WriteText(m_file, "");
    ChildOptions options;
    options.outputFile = m_file.string();
    const ChildResult result = New({"/dev/stdout", "--force", "--json"}, options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    const std::string text = ReadText(m_file);
    EXPECT_THAT(text, ::testing::StartsWith(virtual_head::HeadFileText()));
    EXPECT_EQ(ParseJson(text.substr(virtual_head::HeadFileText().size()))["file"], "/dev/stdout");
}

TEST_F(KorvexctlVirtualNew, AFolderInTheWayIsNoFileToReplace) {
    const ChildResult result = New({m_folder.Path().string()});
    EXPECT_EQ(result.exitCode, kNotWritable);
    EXPECT_THAT(result.error, HasSubstr("Is a directory"));
}

TEST_F(KorvexctlVirtualNew, AHyphenIsStandardOutput) {
    const ChildResult text = New({"-"});
    EXPECT_EQ(text.exitCode, 0) << text.error;
    EXPECT_EQ(text.output, virtual_head::HeadFileText());
    const ChildResult document = New({"-", "--json"});
    EXPECT_EQ(ParseJson(document.output)["text"], virtual_head::HeadFileText());
}

TEST_F(KorvexctlVirtualNew, AFullDiskLeavesNothingBehind) {
    ChildOptions options;
    options.fileSizeLimit = 100;
    const ChildResult result = New({m_file.string()}, options);
    EXPECT_EQ(result.exitCode, kDiskFull);
    EXPECT_THAT(result.error, HasSubstr("disk full: cannot write " + m_file.string()));
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
}

TEST_F(KorvexctlVirtualNew, AFolderThatIsNotThereIsTold) {
    const ChildResult result = New({(m_folder.Path() / "none" / "bench.toml").string()});
    EXPECT_EQ(result.exitCode, kNotWritable);
    EXPECT_THAT(result.error, HasSubstr("cannot write "));
    EXPECT_THAT(New({"/no/such/bench.toml"}).error,
                HasSubstr("cannot write /no/such/bench.toml: "));
}

TEST_F(KorvexctlVirtualNew, NeedsToBeToldWhatAndWhere) {
    EXPECT_EQ(RunKorvexctl({"virtual"}).exitCode, kUsageError);
    EXPECT_EQ(RunKorvexctl({"virtual", "new"}).exitCode, kUsageError);
    EXPECT_EQ(New({"-", "more"}).exitCode, kUsageError);
}

}  // namespace

}  // namespace Korvex3Sync::tests
