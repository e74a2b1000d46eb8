#include "platform/os/FileName.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

constexpr char kName[] = "Köпа日𝄞.txt";

TEST(FileName, OfAnyLettersLeadsToTheFile) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / os::PathOf(kName);
    std::ofstream(file) << "text";
    ASSERT_TRUE(std::filesystem::exists(file));
    // As the system itself has it.
    const std::filesystem::path found = std::filesystem::directory_iterator(folder.Path())->path();
    EXPECT_EQ(found, file);
    EXPECT_TRUE(found.filename().u8string() == u8"Köпа日𝄞.txt");
    EXPECT_EQ(os::TextOf(found.filename()), kName);
}

TEST(FileName, ThatIsNoUtf8NamesAFileThatIsNotThere) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / os::PathOf("K\xF6.txt");
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_NE(os::TextOf(file), "");
}

}  // namespace

}  // namespace Korvex3Sync::tests
