#include "korvexctl/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string_view>

#include "korvexctl/FileError.h"
#include "korvexctl/Korvexctl.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::AtomicFile;
using korvexctl::ExitCode;
using korvexctl::FileError;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AtomicFileTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "file";
};

std::span<const unsigned char> Bytes(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST_F(AtomicFileTest, IsThereOnceItIsCommitted) {
    AtomicFile file(m_file);
    file.Write(Bytes("one "));
    file.Write(Bytes("two"));
    EXPECT_FALSE(std::filesystem::exists(m_file));
    file.Commit();
    EXPECT_EQ(ReadText(m_file), "one two");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, LeavesNothingWithoutCommit) {
    {
        AtomicFile file(m_file);
        file.Write(Bytes("half"));
    }
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
}

TEST_F(AtomicFileTest, AnOlderFileStaysUntilTheNewOneIsWhole) {
    WriteText(m_file, "old");
    {
        AtomicFile file(m_file);
        file.Write(Bytes("half"));
    }
    EXPECT_EQ(ReadText(m_file), "old");
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_EQ(ReadText(m_file), "new");
}

TEST_F(AtomicFileTest, AFullDiskIsToldAndLeavesNothing) {
    // What is written to the temporary name goes to a device that is always full.
    std::filesystem::create_symlink("/dev/full", m_folder.Path() / "file.part");
    try {
        korvexctl::WriteFile(m_file, std::string(100'000, 'x'));
        FAIL() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::DiskFull);
        EXPECT_THAT(error.what(), HasSubstr("disk full: cannot write " + m_file.string()));
    }
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
}

TEST_F(AtomicFileTest, AFullDiskThatShowsOnClosingOnlyIsToldToo) {
    std::filesystem::create_symlink("/dev/full", m_folder.Path() / "file.part");
    // Short enough to stay in the buffer until then.
    EXPECT_THROW(korvexctl::WriteFile(m_file, std::string_view("x")), FileError);
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
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
