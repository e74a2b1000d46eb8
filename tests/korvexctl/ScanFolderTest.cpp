#include "korvexctl/scan/ScanFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

#include "korvexctl/FileCalls.h"
#include "korvexctl/ScanOverHead.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::FolderLock;
using korvexctl::Outcome;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(FolderLock, KeepsOthersOutUntilItEndsAndLeavesNothing) {
    const TemporaryFolder folder;
    const TemporaryFolder other;
    {
        const FolderLock lock(folder.Path());
        EXPECT_THROW(FolderLock again(folder.Path()), korvexctl::CommandError);
        const FolderLock elsewhere(other.Path());
        std::filesystem::create_symlink(folder.Path(), other.Path() / "link");
        EXPECT_THROW(FolderLock sameFolder(other.Path() / "link"), korvexctl::CommandError);
        EXPECT_THAT(FileNames(folder.Path()), IsEmpty());
    }
    const FolderLock lock(folder.Path());
}

TEST_F(ScanOverHead, ASecondScanIntoTheFolderEndsAndLeavesTheFirstOneAlone) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path();
    m_options.end.sets = 30;
    std::optional<ChildResult> second;
    bool first = true;
    const Outcome outcome = Scan([&](const auto& file, const auto& bytes) {
        korvexctl::StoreUnsynced(file, bytes);
        if (std::exchange(first, false)) {
            second = RunKorvexctl(
                {"--virtual", "scan", "--json", "--sets", "1", "--out",
                 (folder.Path() / "..").string() + "/" + folder.Path().filename().string()});
        }
    });
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    ASSERT_TRUE(second);
    EXPECT_EQ(second->exitCode, 6) << second->error;
    EXPECT_THAT(second->error, HasSubstr("another scan is writing into it"));
    EXPECT_FALSE(ParseJson(second->output).contains("sets")) << "a scan was made";
    auto names = outcome.figures["files"].get<std::vector<std::string>>();
    names.emplace_back("scan.json");
    EXPECT_THAT(FileNames(folder.Path()), ::testing::UnorderedElementsAreArray(names));
}

TEST_F(ScanOverHead, OneSyncAtTheEndIsForAllPictures) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path();
    m_options.end.sets = 10;
    const FileCalls calls;
    ASSERT_EQ(Scan().code, ExitCode::Done);
    std::vector<std::string> seen = calls.Seen();
    const std::string name = folder.Path().filename().string();
    std::vector<std::string> syncs;
    for (const std::string& call : seen) {
        if (call.starts_with("fsync ") || call.starts_with("syncfs ")) {
            syncs.push_back(call);
        }
    }
    ASSERT_EQ(syncs.size(), 3U);
    EXPECT_EQ(syncs[0], "syncfs " + name);
    EXPECT_THAT(syncs[1], StartsWith("fsync .scan.json."));
    EXPECT_EQ(syncs[2], "fsync " + name);
    // scan.json says that all others are there.
    EXPECT_THAT(seen.at(seen.size() - 2), HasSubstr(" -> scan.json"));
}

TEST_F(ScanOverHead, ADiskThatCannotBeSyncedIsTold) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path();
    const FileCalls calls(
        [](const std::string& call) { return call.starts_with("syncfs ") ? EIO : 0; });
    const Outcome outcome = Scan();
    EXPECT_EQ(outcome.code, ExitCode::NotWritable);
    EXPECT_THAT(outcome.message, StartsWith("cannot write to the folder "));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "scan.json"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
