#include "korvexctl/files/WriteFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "korvexctl/AsNobody.h"
#include "korvexctl/FileCalls.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/WriteFileTest.h"
#include "korvexctl/files/FileError.h"
#include "platform/os/TimeScale.h"
#include "support/Pattern.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::CommandError;
using korvexctl::Existing;
using korvexctl::ExitCode;
using korvexctl::FileError;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Whether a file gets its name by this call.
bool Names(const std::string& call) {
    return call.starts_with("rename") || call.starts_with("link");
}

TEST_F(WriteFileTest, IsThereOnlyWhenItIsComplete) {
    int renamed = 0;
    {
        const FileCalls calls([&](const std::string& call) {
            if (Names(call)) {
                ++renamed;
                EXPECT_FALSE(std::filesystem::exists(m_file));
                EXPECT_THAT(FileNames(m_folder.Path()),
                            ElementsAre(MatchesPattern("\\.file\\.[a-z0-9]{6}")));
                EXPECT_EQ(ReadText(m_folder.Path() / FileNames(m_folder.Path()).front()),
                          "one two");
            }
            return 0;
        });
        korvexctl::WriteFile(m_file, std::string_view("one two"));
    }
    EXPECT_EQ(renamed, 1);
    EXPECT_EQ(ReadText(m_file), "one two");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

/// What is left of a power failure between two of these calls is the old file or the new one.
TEST_F(WriteFileTest, IsOnTheDiskBeforeItHasItsName) {
    const std::string folder = m_folder.Path().filename().string();
    const std::string temporary = "\\.file\\.[a-z0-9]{6}";
    const auto synced = MatchesPattern("fsync " + temporary);
    {
        const FileCalls calls;
        korvexctl::WriteFile(m_file, std::string_view("new"));
        EXPECT_THAT(calls.Seen(),
                    ElementsAre(synced, MatchesPattern("rename " + temporary + " -> file"),
                                "fsync " + folder));
    }
    {
        const FileCalls calls;
        korvexctl::WriteFile(m_file, std::string_view("newer"));
        EXPECT_THAT(
            calls.Seen(),
            ElementsAre(MatchesPattern("fchown " + temporary + " [0-9]+ [0-9]+"), synced,
                        MatchesPattern("rename " + temporary + " -> file"), "fsync " + folder));
    }
    std::filesystem::remove(m_file);
    const FileCalls calls;
    korvexctl::WriteFile(m_file, std::string_view("new"), Existing::Kept);
    EXPECT_THAT(calls.Seen(),
                ElementsAre(synced, MatchesPattern("renameat2 " + temporary + " -> file"),
                            "fsync " + folder));
}

TEST_F(WriteFileTest, ContentThatDoesNotReachTheDiskLeavesTheOldFile) {
    WriteText(m_file, "old");
    for (const auto& [error, code] :
         {std::pair(ENOSPC, ExitCode::DiskFull), std::pair(EIO, ExitCode::NotWritable)}) {
        const FileCalls calls([error = error](const std::string& call) {
            return call.starts_with("fsync .file") ? error : 0;
        });
        try {
            korvexctl::WriteFile(m_file, std::string_view("new"));
            FAIL() << "was written";
        } catch (const FileError& failure) {
            EXPECT_EQ(failure.Code(), code);
            EXPECT_THAT(failure.what(), HasSubstr("cannot write " + m_file.string() + ": "));
        }
        EXPECT_EQ(ReadText(m_file), "old");
        EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
    }
}

TEST_F(WriteFileTest, ANameThatDoesNotReachTheDiskIsTold) {
    const std::string folder = "fsync " + m_folder.Path().filename().string();
    {
        const FileCalls calls([&](const std::string& call) { return call == folder ? EIO : 0; });
        EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("new")), FileError);
    }
    // Not every file system knows that of folders.
    const FileCalls calls([&](const std::string& call) { return call == folder ? EINVAL : 0; });
    korvexctl::WriteFile(m_file, std::string_view("newer"));
    EXPECT_EQ(ReadText(m_file), "newer");
}

TEST_F(WriteFileTest, AFileThatGetsNoNameLeavesNothing) {
    const auto refuse = [](const std::string& call) { return Names(call) ? EACCES : 0; };
    {
        const FileCalls calls(refuse);
        EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("half")), FileError);
        EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
    }
    WriteText(m_file, "old");
    {
        const FileCalls calls(refuse);
        EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("half")), FileError);
    }
    EXPECT_EQ(ReadText(m_file), "old");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_EQ(ReadText(m_file), "new");
}

TEST_F(WriteFileTest, AFullDiskIsTold) {
    try {
        korvexctl::WriteFile("/dev/full", std::string_view("x"));
        FAIL() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::DiskFull);
        EXPECT_THAT(error.what(), HasSubstr("disk full: cannot write /dev/full"));
    }
    korvexctl::RequireWritable("/dev/full");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(WriteFileTest, TwoWritersOfOneFileAreBothWhole) {
    bool first = true;
    const FileCalls calls([&](const std::string& call) {
        if (Names(call) && std::exchange(first, false)) {
            korvexctl::WriteFile(m_file, std::string_view("first"));
            EXPECT_EQ(ReadText(m_file), "first");
        }
        return 0;
    });
    korvexctl::WriteFile(m_file, std::string_view("second"));
    EXPECT_FALSE(first);
    EXPECT_EQ(ReadText(m_file), "second");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(WriteFileTest, AReplacedFileKeepsItsModeAndANewOneHasThatOfTheUmask) {
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

/// Refuses to give files away: always, or only to another owner.
enum class Refused { OwnerAndGroup, Owner };

/// The mode of a file after a file of this mode was replaced, by a user whom the system refuses
/// that.
mode_t ModeAfterReplacing(const std::filesystem::path& file, mode_t former,
                          std::optional<Refused> refused) {
    WriteText(file, "old");
    EXPECT_EQ(::chmod(file.c_str(), former), 0);
    const struct stat status = StatusOf(file);
    const std::string all =
        ' ' + std::to_string(status.st_uid) + ' ' + std::to_string(status.st_gid);
    const std::string groupOnly = " - " + std::to_string(status.st_gid);
    const FileCalls calls([&](const std::string& call) {
        if (!call.starts_with("fchown")) {
            return 0;
        }
        EXPECT_TRUE(call.ends_with(all) || call.ends_with(groupOnly)) << call;
        return refused == Refused::OwnerAndGroup ||
                       (refused == Refused::Owner && call.ends_with(all))
                   ? EPERM
                   : 0;
    });
    korvexctl::WriteFile(file, std::string_view("new"));
    EXPECT_EQ(ReadText(file), "new");
    return StatusOf(file).st_mode & 07777U;
}

// Only root can make a file of another owner or group. Everyone sees here what is made of a system
// that refuses to give one away; root sees the system refuse it as well.
TEST_F(WriteFileTest, AGroupThatCannotBeKeptLeavesNoRightsToAnotherOne) {
    EXPECT_EQ(ModeAfterReplacing(m_file, 06664, Refused::OwnerAndGroup), 0604U);
    EXPECT_EQ(ModeAfterReplacing(m_file, 06664, std::nullopt), 0664U);
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

TEST_F(WriteFileTest, AGroupIsKeptWhereOnlyTheOwnerCannotBe) {
    EXPECT_EQ(ModeAfterReplacing(m_file, 0660, Refused::Owner), 0660U);
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

TEST_F(WriteFileTest, ALinkStaysAndWhatItLeadsToIsReplaced) {
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

TEST_F(WriteFileTest, LinksInACircleAreTold) {
    std::filesystem::create_symlink("file", m_file);
    EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("x")), FileError);
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(WriteFileTest, AFifoGetsTheTextAndStays) {
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

TEST_F(WriteFileTest, AFifoThatNobodyReadsIsTold) {
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    const os::ScopedTimeScale faster(0.01);
    try {
        korvexctl::WriteFile(m_file, std::string_view("text"));
        FAIL() << "was written";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.Code(), ExitCode::NotWritable);
        EXPECT_EQ(error.what(), "cannot write " + m_file.string() + ": the pipe has no reader");
    }
}

TEST_F(WriteFileTest, ASocketIsRefusedAndStays) {
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

TEST_F(WriteFileTest, WhereNothingMayBeReplacedAFileThatCameMeanwhileStays) {
    // Of a file system that cannot rename without replacing, the file gets a second name instead.
    for (const int renaming : {0, EINVAL, ENOSYS}) {
        std::filesystem::remove(m_file);
        const FileCalls calls([&](const std::string& call) {
            WriteText(m_file, "mine");
            return call.starts_with("renameat2") ? renaming : 0;
        });
        try {
            korvexctl::WriteFile(m_file, std::string_view("new"), Existing::Kept);
            FAIL() << "was replaced";
        } catch (const FileError& error) {
            EXPECT_EQ(error.Code(), ExitCode::NotWritable);
            EXPECT_THAT(error.what(), HasSubstr("cannot write " + m_file.string()));
        }
        EXPECT_EQ(ReadText(m_file), "mine");
        EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
    }
}

TEST_F(WriteFileTest, WhereNothingMayBeReplacedANewFileIsMade) {
    for (const int renaming : {0, EINVAL, ENOSYS}) {
        std::filesystem::remove(m_file);
        const FileCalls calls(
            [&](const std::string& call) { return call.starts_with("renameat2") ? renaming : 0; });
        korvexctl::WriteFile(m_file, std::string_view("new"), Existing::Kept);
        EXPECT_EQ(ReadText(m_file), "new");
        EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
        EXPECT_EQ(calls.Seen().back(), "fsync " + m_folder.Path().filename().string());
    }
}

/// No one can make a file in /proc, not even root.
TEST_F(WriteFileTest, WhatIsToldNamesTheFileAskedForAndNoTemporaryOne) {
    const auto message = [](const auto& write) {
        try {
            write();
        } catch (const FileError& error) {
            return std::string(error.what());
        }
        return std::string("was written");
    };
    EXPECT_THAT(message([] { korvexctl::WriteFile("/proc/file", std::string_view("x")); }),
                MatchesPattern("cannot write /proc/file: [A-Z][A-Za-z -]+"));
    EXPECT_THAT(message([] { korvexctl::PrepareFolder("/proc"); }),
                MatchesPattern("cannot write in the folder /proc: [A-Z][A-Za-z -]+"));
}

TEST(FileError, TakesAUsedUpQuotaForAFullDisk) {
    EXPECT_EQ(FileError("", {EDQUOT, std::generic_category()}).Code(), ExitCode::DiskFull);
}

}  // namespace

}  // namespace Korvex3Sync::tests
