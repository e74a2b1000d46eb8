#include "korvexctl/WriteFileTest.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string_view>
#include <system_error>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/files/FileError.h"
#include "korvexctl/files/WriteFile.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::Existing;
using korvexctl::ExitCode;
using korvexctl::FileError;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(WriteFileTest, IsTheWholeTextAndLeavesNothingElse) {
    for (const std::string& text : {std::string("one\r\ntwo\n"), std::string(1 << 20, 'x'),
                                    std::string("short"), std::string()}) {
        korvexctl::WriteFile(m_file, text);
        EXPECT_EQ(ReadText(m_file), text);
        EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
    }
}

TEST_F(WriteFileTest, WhereNothingMayBeReplacedAFileThatIsThereStays) {
    korvexctl::WriteFile(m_file, std::string_view("mine"), Existing::Kept);
    try {
        korvexctl::WriteFile(m_file, std::string_view("new"), Existing::Kept);
        FAIL() << "was replaced";
    } catch (const FileError& error) {
        EXPECT_EQ(error.Code(), ExitCode::NotWritable);
    }
    EXPECT_EQ(ReadText(m_file), "mine");
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("file"));
}

TEST_F(WriteFileTest, AFileOfSomeoneElseIsNeverTakenForATemporaryOne) {
    for (const char* name : {"file.part", ".korvexctl"}) {
        WriteText(m_folder.Path() / name, "mine");
    }
    korvexctl::PrepareFolder(m_folder.Path());
    korvexctl::WriteFile(m_file, std::string_view("new"));
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre(".korvexctl", "file", "file.part"));
    EXPECT_EQ(ReadText(m_folder.Path() / "file.part"), "mine");
    EXPECT_EQ(ReadText(m_folder.Path() / ".korvexctl"), "mine");
}

TEST_F(WriteFileTest, AskingWhetherItCanBeWrittenLeavesAllAsItIs) {
    korvexctl::RequireWritable(m_file);
    EXPECT_THAT(FileNames(m_folder.Path()), IsEmpty());
    WriteText(m_file, "old");
    korvexctl::RequireWritable(m_file);
    EXPECT_EQ(ReadText(m_file), "old");
    EXPECT_THROW(korvexctl::RequireWritable(m_folder.Path()), FileError);
    EXPECT_THROW(korvexctl::RequireWritable(m_folder.Path() / "none" / "file"), FileError);
    EXPECT_THROW(korvexctl::RequireWritable(m_file / "below a file"), FileError);
}

TEST_F(WriteFileTest, AFolderInTheWayIsToldAndStays) {
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

TEST_F(WriteFileTest, AMissingFolderIsTold) {
    EXPECT_THROW(korvexctl::WriteFile(m_folder.Path() / "none" / "file", std::string_view("x")),
                 FileError);
}

TEST_F(WriteFileTest, APreparedFolderIsMadeAndLeftEmpty) {
    const auto folder = m_folder.Path() / "a" / "b";
    korvexctl::PrepareFolder(folder);
    korvexctl::PrepareFolder(folder);
    EXPECT_THAT(FileNames(folder), IsEmpty());
}

ExitCode CodeOf(int error) {
    return FileError("", {error, std::generic_category()}).Code();
}

TEST(FileError, TellsAFullDiskFromEverythingElse) {
    for (const int error : {ENOSPC, EFBIG}) {
        EXPECT_EQ(CodeOf(error), ExitCode::DiskFull) << error;
    }
    for (const int error : {EACCES, EROFS, ENOENT, EIO, EPIPE}) {
        EXPECT_EQ(CodeOf(error), ExitCode::NotWritable) << error;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
