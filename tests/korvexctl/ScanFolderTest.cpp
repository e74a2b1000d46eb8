#include "korvexctl/scan/ScanFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "korvexctl/ScanOverHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::FolderLock;
using korvexctl::Outcome;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(FolderLock, KeepsOthersOutUntilItEndsAndLeavesNothing) {
    const TemporaryFolder folder;
    const TemporaryFolder other;
    {
        const FolderLock lock(folder.Path());
        EXPECT_THROW(FolderLock again(folder.Path()), korvexctl::CommandError);
        const FolderLock elsewhere(other.Path());
        EXPECT_THROW(FolderLock sameFolder(other.Path() / ".." / folder.Path().filename()),
                     korvexctl::CommandError);
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

}  // namespace

}  // namespace Korvex3Sync::tests
