#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/os/SharedFile.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using os::SharedFile;
using ::testing::Contains;
using ::testing::Not;

constexpr std::uint64_t kSharedSize = 8192;

class SharedFiles : public ::testing::Test {
protected:
    ~SharedFiles() override { fs::remove_all(m_path); }

    static SharedFile Create() {
        std::error_code error;
        SharedFile file = SharedFile::Create(kSharedSize, error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_TRUE(file);
        return file;
    }
    SharedFile CreateNamed() const {
        SharedFile file = Create();
        EXPECT_FALSE(file.TakeName(m_name));
        return file;
    }
    SharedFile Open() const {
        std::error_code error;
        SharedFile file = SharedFile::Open(m_name, error);
        EXPECT_EQ(static_cast<bool>(file), !error);
        return file;
    }
    std::error_code OpenError() const {
        std::error_code error;
        SharedFile::Open(m_name, error);
        return error;
    }

    const std::string m_name = "test-" + std::to_string(::getpid());
    const fs::path m_path = "/dev/shm/korvex3sync-" + std::to_string(::geteuid()) + "-" + m_name;
};

TEST_F(SharedFiles, HaveANameFromTheMomentThatTheyTakeIt) {
    const SharedFile file = Create();
    EXPECT_FALSE(file.Now().usable);
    EXPECT_EQ(file.Now().size, kSharedSize);
    EXPECT_EQ(OpenError(), std::errc::no_such_file_or_directory);
    EXPECT_THAT(os::SharedFileNames(), Not(Contains(m_name)));
    EXPECT_FALSE(file.TakeName(m_name));
    EXPECT_TRUE(file.Now().usable);
    EXPECT_TRUE(Open());
    EXPECT_THAT(os::SharedFileNames(), Contains(m_name));
    file.DropName(m_name);
    EXPECT_FALSE(file.Now().usable);
    EXPECT_FALSE(fs::exists(m_path));
}

TEST_F(SharedFiles, TakeANameFromTheFileThatHasIt) {
    const SharedFile first = CreateNamed();
    const SharedFile second = CreateNamed();
    EXPECT_FALSE(first.Now().usable);
    EXPECT_TRUE(second.Now().usable);
    first.DropName(m_name);
    EXPECT_TRUE(second.Now().usable) << "the name is no longer that of the first";
}

TEST_F(SharedFiles, ShowWhatOthersWrite) {
    const SharedFile file = CreateNamed();
    const SharedFile opened = Open();
    std::error_code error;
    const os::SharedMapping own = file.Map(kSharedSize, error);
    ASSERT_FALSE(error);
    const os::SharedMapping other = opened.Map(kSharedSize, error);
    ASSERT_FALSE(error);
    own.Data()[kSharedSize - 1] = std::byte{42};
    EXPECT_EQ(other.Data()[kSharedSize - 1], std::byte{42});
    os::SharedMapping moved;
    moved = opened.Map(kSharedSize, error);
    EXPECT_EQ(moved.Data()[kSharedSize - 1], std::byte{42});
    const os::SharedMapping none = opened.Map(0, error);
    EXPECT_TRUE(error);
    EXPECT_EQ(none.Data(), nullptr);
}

TEST_F(SharedFiles, AreOpenedOnlyIfTheyAreFilesOfThisUserAlone) {
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

TEST_F(SharedFiles, CannotTakeTheNameOfAFolder) {
    fs::create_directory(m_path);
    EXPECT_TRUE(Create().TakeName(m_name));
    EXPECT_TRUE(fs::is_directory(m_path));
}

TEST_F(SharedFiles, ReserveTheirMemoryOrSayThatThereIsTooLittle) {
    std::error_code error;
    const SharedFile file = SharedFile::Create(std::uint64_t{1} << 50U, error);
    ASSERT_FALSE(error);
    EXPECT_FALSE(file.Reserve(std::uint64_t{1} << 40U, 10000));
    EXPECT_EQ(file.Reserve(0, std::uint64_t{1} << 50U), std::errc::no_space_on_device);
    EXPECT_EQ(file.Now().size, std::uint64_t{1} << 50U);
}

TEST_F(SharedFiles, LockPlacesAgainstOtherObjects) {
    constexpr std::uint64_t kPlace = std::uint64_t{1} << 62U;
    const SharedFile file = CreateNamed();
    const SharedFile one = Open();
    const SharedFile two = Open();
    EXPECT_TRUE(one.LockForReading(kPlace));
    EXPECT_TRUE(two.LockForReading(kPlace));
    EXPECT_FALSE(file.LockForWriting(kPlace));
    EXPECT_TRUE(file.LockForWriting(kPlace + 1));
    EXPECT_TRUE(file.LockForWriting(kPlace - 1));
    EXPECT_FALSE(one.LockForReading(kPlace + 1));
    EXPECT_TRUE(file.LockedElsewhere(kPlace));
    EXPECT_FALSE(file.LockedElsewhere(kPlace + 1)) << "its own";
    EXPECT_TRUE(two.LockedElsewhere(kPlace + 1));
    one.Unlock(kPlace);
    EXPECT_FALSE(file.LockForWriting(kPlace));
    two.Unlock(kPlace);
    EXPECT_FALSE(file.LockedElsewhere(kPlace));
    EXPECT_TRUE(file.LockForWriting(kPlace));
    EXPECT_FALSE(one.LockForWriting(kPlace + 2)) << "it is open for reading only";
}

TEST_F(SharedFiles, ReleaseTheirLocksWithTheObject) {
    SharedFile file = CreateNamed();
    auto opened = std::make_unique<SharedFile>(Open());
    EXPECT_TRUE(opened->LockForReading(7));
    EXPECT_TRUE(file.LockForWriting(8));
    EXPECT_FALSE(file.LockForWriting(7));
    opened = std::make_unique<SharedFile>(Open());
    EXPECT_TRUE(file.LockForWriting(7));
    file = SharedFile();
    EXPECT_TRUE(opened->LockForReading(8));
}

}  // namespace

}  // namespace Korvex3Sync::tests
