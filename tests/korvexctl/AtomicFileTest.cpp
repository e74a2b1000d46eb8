#include "korvexctl/files/AtomicFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "korvexctl/AsNobody.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/files/FileError.h"
#include "korvexctl/files/FileRights.h"
#include "korvexctl/files/OpenedFile.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::AtomicFile;
using korvexctl::CommandError;
using korvexctl::Existing;
using korvexctl::ExitCode;
using korvexctl::FileError;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

class AtomicFileTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "file";
};

TEST_F(AtomicFileTest, IsThereOnceItIsCommitted) {
    AtomicFile file(m_file);
    file.Write("one ");
    file.Write("two");
    EXPECT_FALSE(std::filesystem::exists(m_file));
    file.Commit();
    EXPECT_EQ(ReadText(m_file), "one two");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, LeavesNothingWithoutCommit) {
    {
        AtomicFile file(m_file);
        file.Write("half");
    }
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
}

TEST_F(AtomicFileTest, AnOlderFileStaysUntilTheNewOneIsWhole) {
    WriteText(m_file, "old");
    {
        AtomicFile file(m_file);
        file.Write("half");
    }
    EXPECT_EQ(ReadText(m_file), "old");
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_EQ(ReadText(m_file), "new");
}

TEST_F(AtomicFileTest, AFullDiskIsTold) {
    try {
        korvexctl::WriteFile("/dev/full", std::string_view("x"));
        FAIL() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::DiskFull);
        EXPECT_THAT(error.what(), HasSubstr("disk full: cannot write /dev/full"));
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(AtomicFileTest, AFileOfSomeoneElseIsNeverTakenForATemporaryOne) {
    for (const char* name : {"file.part", ".korvexctl"}) {
        WriteText(m_folder.Path() / name, "mine");
    }
    korvexctl::PrepareFolder(m_folder.Path());
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre(".korvexctl", "file", "file.part"));
    EXPECT_EQ(ReadText(m_folder.Path() / "file.part"), "mine");
    EXPECT_EQ(ReadText(m_folder.Path() / ".korvexctl"), "mine");
}

TEST_F(AtomicFileTest, TwoWritersOfOneFileAreBothWhole) {
    AtomicFile first(m_file);
    AtomicFile second(m_file);
    first.Write("fir");
    second.Write("second");
    first.Write("st");
    first.Commit();
    EXPECT_EQ(ReadText(m_file), "first");
    second.Commit();
    EXPECT_EQ(ReadText(m_file), "second");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, AReplacedFileKeepsItsModeAndANewOneHasThatOfTheUmask) {
    WriteText(m_file, "old");
    constexpr auto kMode = static_cast<std::filesystem::perms>(0640);
    std::filesystem::permissions(m_file, kMode);
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_EQ(std::filesystem::status(m_file).permissions(), kMode);
    EXPECT_EQ(ReadText(m_file), "new");

    const auto other = m_folder.Path() / "other";
    const mode_t umaskBefore = ::umask(0027);
    korvexctl::WriteFile(other, std::string_view("new"));
    ::umask(umaskBefore);
    EXPECT_EQ(std::filesystem::status(other).permissions(), kMode);
}

/// A group that this process is no member of, whatever user runs the test.
constexpr gid_t kForeignGroup = 54321;

struct stat StatusOf(const std::filesystem::path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
    return status;
}

/// The mode of a new file after it was given the rights of one of this mode.
mode_t ModeGiven(const std::filesystem::path& file, mode_t former, korvexctl::GiveAway giveAway) {
    WriteText(file, "new");
    struct stat replaced = StatusOf(file);
    replaced.st_mode = S_IFREG | former;
    replaced.st_gid = kForeignGroup;
    const korvexctl::OpenedFile opened(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_GE(opened.Get(), 0);
    korvexctl::GiveRightsOf(replaced, opened.Get(), giveAway);
    return StatusOf(file).st_mode & 07777U;
}

// Only root can make a file of another owner or group. Everyone sees here what is made of a system
// that refuses to give one away; root sees the system refuse it as well.
TEST_F(AtomicFileTest, AGroupThatCannotBeKeptLeavesNoRightsToAnotherOne) {
    EXPECT_EQ(ModeGiven(m_file, 06664, [](int, uid_t, gid_t) { return -1; }), 0604U);
    EXPECT_EQ(ModeGiven(m_file, 06664, [](int, uid_t, gid_t) { return 0; }), 0664U);
    if (::geteuid() != 0) {
        return;
    }
    WriteText(m_file, "old");
    ASSERT_EQ(::chown(m_file.c_str(), 0, kForeignGroup), 0);
    ASSERT_EQ(::chmod(m_file.c_str(), 06664), 0);
    ASSERT_EQ(::chown(m_folder.Path().c_str(), kNobody, kNobody), 0);
    {
        const AsNobody nobody;
        korvexctl::WriteFile(m_file, std::string_view("new"));
    }
    const struct stat status = StatusOf(m_file);
    EXPECT_EQ(status.st_uid, kNobody);
    EXPECT_EQ(status.st_gid, kNobody);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
    EXPECT_EQ(ReadText(m_file), "new");
}

TEST_F(AtomicFileTest, AGroupIsKeptWhereOnlyTheOwnerCannotBe) {
    EXPECT_EQ(ModeGiven(m_file, 0660,
                        [](int, uid_t owner, gid_t group) {
                            return owner == static_cast<uid_t>(-1) && group == kForeignGroup ? 0
                                                                                             : -1;
                        }),
              0660U);
    if (::geteuid() != 0) {
        return;
    }
    WriteText(m_file, "old");
    ASSERT_EQ(::chown(m_file.c_str(), 0, kForeignGroup), 0);
    ASSERT_EQ(::chmod(m_file.c_str(), 0660), 0);
    ASSERT_EQ(::chown(m_folder.Path().c_str(), kNobody, kNobody), 0);
    {
        const AsNobody nobody({kForeignGroup});
        korvexctl::WriteFile(m_file, std::string_view("new"));
    }
    const struct stat status = StatusOf(m_file);
    EXPECT_EQ(status.st_uid, kNobody);
    EXPECT_EQ(status.st_gid, kForeignGroup);
    EXPECT_EQ(status.st_mode & 07777, 0660U);
}

TEST_F(AtomicFileTest, ALinkStaysAndWhatItLeadsToIsReplaced) {
    const auto target = m_folder.Path() / "there" / "target";
    std::filesystem::create_directory(target.parent_path());
    std::filesystem::create_symlink("second", m_file);
    std::filesystem::create_symlink("there/target", m_folder.Path() / "second");
    // At first the link leads to nothing.
    for (const char* text : {"one", "two"}) {
        korvexctl::WriteFile(m_file, std::string_view(text));
        EXPECT_TRUE(std::filesystem::is_symlink(m_file));
        EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path() / "second"));
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(target)));
        EXPECT_EQ(ReadText(target), text);
    }
    EXPECT_THAT(FileNames(target.parent_path()), ElementsAre("target"));
}

TEST_F(AtomicFileTest, LinksInACircleAreTold) {
    std::filesystem::create_symlink("file", m_file);
    EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("x")), FileError);
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, AFifoGetsTheTextAndStays) {
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    const int reader = ::open(m_file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    korvexctl::WriteFile(m_file, std::string_view("text"));
    std::array<char, 16> got{};
    EXPECT_EQ(::read(reader, got.data(), got.size()), 4);
    EXPECT_STREQ(got.data(), "text");
    ::close(reader);
    EXPECT_TRUE(std::filesystem::is_fifo(m_file));
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, AFifoThatNobodyReadsIsTold) {
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    try {
        korvexctl::WriteFile(m_file, std::string_view("text"));
        FAIL() << "was written";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.Code(), ExitCode::NotWritable);
        EXPECT_EQ(error.what(), "cannot write " + m_file.string() + ": nobody is there to read it");
    }
}

TEST_F(AtomicFileTest, ASocketIsRefusedAndStays) {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(listener, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(m_file.string().size(), sizeof(address.sun_path));
    m_file.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("x")), CommandError);
    ::close(listener);
    EXPECT_TRUE(std::filesystem::is_socket(m_file));
}

TEST_F(AtomicFileTest, WhereNothingMayBeReplacedAFileThatCameMeanwhileStays) {
    AtomicFile file(m_file, Existing::Kept);
    file.Write("new");
    WriteText(m_file, "mine");
    try {
        file.Commit();
        FAIL() << "was replaced";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::NotWritable);
        EXPECT_THAT(error.what(), HasSubstr("cannot write " + m_file.string()));
    }
    EXPECT_EQ(ReadText(m_file), "mine");
}

TEST_F(AtomicFileTest, WhereNothingMayBeReplacedANewFileIsMade) {
    korvexctl::WriteFile(m_file, std::string_view("new"), Existing::Kept);
    EXPECT_EQ(ReadText(m_file), "new");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, AskingWhetherItCanBeWrittenLeavesAllAsItIs) {
    korvexctl::RequireWritable(m_file);
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
    WriteText(m_file, "old");
    korvexctl::RequireWritable(m_file);
    EXPECT_EQ(ReadText(m_file), "old");
    korvexctl::RequireWritable("/dev/full");
    EXPECT_THROW(korvexctl::RequireWritable(m_folder.Path()), FileError);
    EXPECT_THROW(korvexctl::RequireWritable(m_folder.Path() / "none" / "file"), FileError);
    EXPECT_THROW(korvexctl::RequireWritable(m_file / "below a file"), FileError);
}

/// No one can make a file in /proc, not even root.
TEST_F(AtomicFileTest, WhatIsToldNamesTheFileAskedForAndNoTemporaryOne) {
    const auto message = [](const auto& write) {
        try {
            write();
        } catch (const FileError& error) {
            return std::string(error.what());
        }
        return std::string("was written");
    };
    EXPECT_THAT(message([] { korvexctl::WriteFile("/proc/file", std::string_view("x")); }),
                MatchesRegex("cannot write /proc/file: [A-Z][A-Za-z -]+"));
    EXPECT_THAT(message([] { korvexctl::PrepareFolder("/proc"); }),
                MatchesRegex("cannot write in the folder /proc: [A-Z][A-Za-z -]+"));
}

TEST_F(AtomicFileTest, AFolderInTheWayIsToldAndStays) {
    std::filesystem::create_directory(m_file);
    WriteText(m_file / "inside", "kept");
    try {
        korvexctl::WriteFile(m_file, std::string_view("x"));
        FAIL() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::NotWritable);
    }
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
    EXPECT_EQ(ReadText(m_file / "inside"), "kept");
}

TEST_F(AtomicFileTest, AMissingFolderIsTold) {
    EXPECT_THROW(AtomicFile(m_folder.Path() / "none" / "file"), FileError);
}

TEST_F(AtomicFileTest, APreparedFolderIsMadeAndLeftEmpty) {
    const auto folder = m_folder.Path() / "a" / "b";
    korvexctl::PrepareFolder(folder);
    korvexctl::PrepareFolder(folder);
    EXPECT_THAT(FileNames(folder), IsEmpty());
}

TEST(FileError, TellsAFullDiskFromEverythingElse) {
    for (const int error : {ENOSPC, EDQUOT, EFBIG}) {
        EXPECT_EQ(FileError::CodeOf(error), ExitCode::DiskFull) << error;
    }
    for (const int error : {EACCES, EROFS, ENOENT, EIO, EPIPE}) {
        EXPECT_EQ(FileError::CodeOf(error), ExitCode::NotWritable) << error;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
