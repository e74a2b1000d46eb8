#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/AsNobody.h"
#include "korvexctl/FileCalls.h"
#include "korvexctl/ProfileOverHead.h"
#include "korvexctl/ScanOverEarlierOne.h"
#include "korvexctl/scan/ScanFolder.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(SystemFolderLock, IsThatOfTheFolderBehindALink) {
    const TemporaryFolder folder;
    const TemporaryFolder other;
    const korvexctl::FolderLock lock(folder.Path());
    std::filesystem::create_symlink(folder.Path(), other.Path() / "link");
    EXPECT_THROW(korvexctl::FolderLock sameFolder(other.Path() / "link"), korvexctl::CommandError);
}

TEST_F(ScanOverEarlierOne, AFolderThatCannotBeLookedIntoIsToldBeforeTheScan) {
    ASSERT_EQ(::chmod(m_folder.Path().c_str(), 0333), 0);
    std::optional<AsNobody> nobody;
    if (::geteuid() == 0) {
        nobody.emplace();  // root may look everywhere
    }
    const Outcome outcome = Scan();
    nobody.reset();
    ASSERT_EQ(::chmod(m_folder.Path().c_str(), 0700), 0);
    EXPECT_EQ(outcome.code, ExitCode::NotWritable);
    EXPECT_EQ(outcome.message,
              "cannot look into the folder " + m_folder.Path().string() + ": Permission denied");
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty()) << "found out over a connected head";
    ExpectEarlierScan();
}

TEST_F(ProfileOverHead, ADescriptorThatIsOpenForReadingOnlyCannotBeSavedTo) {
    WriteProfileText("trigger-period = 5\n");
    const int descriptor = ::open(m_file.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    const std::string name = "/dev/fd/" + std::to_string(descriptor);
    const CommandResult result = RunHere({"profile", "save", name});
    ::close(descriptor);
    EXPECT_EQ(result.code, ExitCode::NotWritable);
    EXPECT_EQ(result.message, "cannot write " + name + ": it is open for reading only");
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty()) << "found out over a connected head";
}

TEST_F(ProfileOverHead, AFifoThatNobodyWritesToIsNoProfile) {
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    for (const char* action : {"load", "diff"}) {
        const CommandResult result = Profile(action);
        EXPECT_EQ(result.code, ExitCode::ProfileRefused);
        EXPECT_EQ(result.message, m_file.string() + ": is not a regular file");
    }
}

TEST_F(ProfileOverHead, AFifoThatIsReadGetsTheProfileOnceTheHeadIsFree) {
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    const int reader = ::open(m_file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    const CommandResult result = Profile("save");
    EXPECT_EQ(result.code, ExitCode::Done) << result.message;
    std::string got(1 << 16, '\0');
    const ssize_t size = ::read(reader, got.data(), got.size());
    ::close(reader);
    ASSERT_GT(size, 0);
    EXPECT_THAT(got, HasSubstr("\ntrigger-period = 10\n"));
    EXPECT_TRUE(std::filesystem::is_fifo(m_file));
}

TEST(KorvexctlUsage, ALogThatNobodyReadsIsRefused) {
    const TemporaryFolder folder;
    const auto fifo = folder.Path() / "log";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const ChildResult result = RunKorvexctl({"list", "--virtual", "--log", fifo.string()});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_THAT(result.error, HasSubstr("cannot open the log file " + fifo.string() +
                                        ": the pipe has no reader"));
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
