#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "os/SharedFiles.h"

// Of the files in /dev/shm, and of their memory, which need not all exist.

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

class SharedSystemFiles : public SharedFiles {
protected:
    ~SharedSystemFiles() override { fs::remove_all(m_path); }

    const fs::path m_path = "/dev/shm/korvex3sync-" + std::to_string(::geteuid()) + "-" + m_name;
};

TEST_F(SharedSystemFiles, AreOpenedOnlyIfTheyAreFilesOfThisUserAlone) {
    {
        const SharedFile file = CreateNamed();
        for (const mode_t mode : {0601U, 0610U, 0604U, 0660U}) {
            ASSERT_EQ(::chmod(m_path.c_str(), mode), 0);
            EXPECT_EQ(OpenError(), std::errc::permission_denied) << std::oct << mode;
            EXPECT_FALSE(file.Now().usable) << std::oct << mode;
        }
    }
    fs::remove(m_path);
    fs::create_directory(m_path);
    fs::permissions(m_path, fs::perms::owner_all);
    EXPECT_EQ(OpenError(), std::errc::permission_denied);
    fs::remove(m_path);
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_EQ(OpenError(), std::errc::permission_denied);
    fs::remove(m_path);
    fs::create_symlink("/dev/zero", m_path);
    EXPECT_EQ(OpenError(), std::errc::too_many_symbolic_link_levels);
}

TEST_F(SharedSystemFiles, CannotTakeTheNameOfAFolder) {
    fs::create_directory(m_path);
    EXPECT_TRUE(Create().TakeName(m_name));
    EXPECT_TRUE(fs::is_directory(m_path));
}

TEST_F(SharedSystemFiles, ReserveTheirMemoryOrSayThatThereIsTooLittle) {
    std::error_code error;
    const SharedFile file = SharedFile::Create(std::uint64_t{1} << 50U, error);
    ASSERT_FALSE(error);
    EXPECT_FALSE(file.Reserve(std::uint64_t{1} << 40U, 10000));
    EXPECT_EQ(file.Reserve(0, std::uint64_t{1} << 50U), std::errc::no_space_on_device);
    EXPECT_EQ(file.Now().size, std::uint64_t{1} << 50U);
}

}  // namespace

}  // namespace Korvex3Sync::tests
