#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "support/ChildProcess.h"
#include "support/Environment.h"
#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr std::size_t kOwnedBytes = 5000;
constexpr uid_t kNobody = 65534;

/// Files of this test's areas: those of its runtime folder.
std::vector<std::string> AreaFiles() {
    const std::string whole = FileOf("x").filename().string();
    const std::string start = whole.substr(0, whole.size() - 1);
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator("/dev/shm")) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(start)) {
            files.push_back(name);
        }
    }
    return files;
}

std::size_t Mappings() {
    std::ifstream maps("/proc/self/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find("/dev/shm") != std::string::npos ? 1 : 0;
    }
    return count;
}

std::size_t Descriptors() {
    const fs::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

/// This process without the rights of root.
class WithoutRights {
public:
    WithoutRights() { EXPECT_EQ(::seteuid(kNobody), 0); }
    ~WithoutRights() { EXPECT_EQ(::seteuid(0), 0); }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;
};

class Owners : public ::testing::Test {
protected:
    Folders m_folders;
};

TEST_F(Owners, AloneMayOpenTheirArea) {
    const mode_t before = ::umask(0);
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(FileOf("images").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0600));
    EXPECT_EQ(status.st_uid, ::geteuid());
}

TEST_F(Owners, CanReadTheirAreaWhateverTheUmask) {
    const mode_t before = ::umask(0777);
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(FileOf("images").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0600));
}

TEST_F(Owners, DoNotReadAnAreaThatOthersMayOpen) {
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ASSERT_TRUE(Write(*writer, {"a"}, 1, kOwnedBytes));
    const auto reader = ReadArea("images");
    for (const mode_t mode : {0604U, 0602U, 0640U, 0620U, 0601U, 0666U}) {
        ASSERT_TRUE(Found(*reader, "a"));
        ASSERT_EQ(::chmod(FileOf("images").c_str(), mode), 0);
        EXPECT_EQ(Found(*reader, "a"), std::nullopt) << std::oct << mode;
        EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt) << std::oct << mode;
        ASSERT_TRUE(Write(*writer, {"a"}, 2, kOwnedBytes));
        EXPECT_THAT(Found(*reader, "a"), Optional(Whole(2, kOwnedBytes)));
    }
}

// Only root can make files of two users. Everyone else sees at least that the file's owner counts
// in the name.
TEST_F(Owners, DoNotShareAreasWithAnotherUser) {
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ASSERT_TRUE(Write(*writer, {"a"}, 1, kOwnedBytes));
    const fs::path file = FileOf("images");
    EXPECT_THAT(file.string(), HasSubstr("-" + std::to_string(::geteuid()) + "-"));
    if (::geteuid() != 0) {
        return;
    }
    const auto reader = ReadArea("images");
    ASSERT_EQ(::chown(file.c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(Found(*reader, "a"), std::nullopt) << "root could open it";
    ASSERT_TRUE(Write(*writer, {"a"}, 2, kOwnedBytes)) << "root may remove what is in the way";
    EXPECT_THAT(Found(*reader, "a"), Optional(Whole(2, kOwnedBytes)));
}

TEST_F(Owners, AreToldThatANameBelongsToAnotherUser) {
    if (::geteuid() != 0) {
        return;
    }
    for (const fs::path& folder : {m_folders.Base(), m_folders.Runtime().parent_path()}) {
        ASSERT_EQ(::chown(folder.c_str(), kNobody, kNobody), 0);
    }
    const WithoutRights nobody;
    const fs::path file = FileOf("images");
    ASSERT_EQ(::seteuid(0), 0);
    std::ofstream(file) << "of root";
    ASSERT_EQ(::seteuid(kNobody), 0);
    std::string reason;
    EXPECT_EQ(tunnel::AreaWriter::Make("images", 3, kOwnedBytes, reason), nullptr);
    EXPECT_THAT(reason, HasSubstr("Operation not permitted"));
    EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_TRUE(fs::remove(file));
    ASSERT_EQ(::seteuid(kNobody), 0);
}

TEST_F(Owners, AreToldThatTheyHaveNoRuntimeFolder) {
    SetVariable("XDG_RUNTIME_DIR", "/dev/null/none");
    std::string reason;
    EXPECT_EQ(tunnel::AreaWriter::Make("images", 3, kOwnedBytes, reason), nullptr);
    EXPECT_NE(reason, "");
    reason.clear();
    EXPECT_EQ(tunnel::AreaReader::Open("images", reason), nullptr);
    EXPECT_NE(reason, "");
    m_folders.Use();
}

TEST_F(Owners, WithAnotherRuntimeFolderHaveOtherAreas) {
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ASSERT_TRUE(Write(*writer, {"a"}, 1, kOwnedBytes));
    const fs::path before = FileOf("images");
    {
        const Folders others;
        EXPECT_NE(FileOf("images"), before);
        EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt);
    }
    m_folders.Use();
    EXPECT_TRUE(Found(*ReadArea("images"), "a"));
}

TEST_F(Owners, AreToldThatThereIsNotEnoughMemory) {
    const std::size_t descriptors = Descriptors();
    std::string reason;
    // No system has this much.
    EXPECT_EQ(tunnel::AreaWriter::Make("images", 4096, std::size_t{1} << 30U, reason), nullptr);
    EXPECT_THAT(reason, HasSubstr("4398046875648 bytes: No space left on device"));
    EXPECT_THAT(AreaFiles(), IsEmpty());
    EXPECT_EQ(Descriptors(), descriptors);
    EXPECT_EQ(Mappings(), 0U);
}

TEST_F(Owners, KeepTheOldAreaIfThereIsNoMemoryForANewOne) {
    const auto writer = MakeArea("images", 3, kOwnedBytes);
    ASSERT_TRUE(Write(*writer, {"a"}, 1, kOwnedBytes));
    std::string reason;
    EXPECT_EQ(tunnel::AreaWriter::Make("images", 4096, std::size_t{1} << 30U, reason), nullptr);
    EXPECT_TRUE(Found(*ReadArea("images"), "a"));
    EXPECT_TRUE(Write(*writer, {"a"}, 2, kOwnedBytes));
}

// A file system of 4 MiB in a name space of its own, where the system allows one.
TEST_F(Owners, AreToldThatTheMemoryIsFullWithoutAnythingLeftBehind) {
    const std::vector<std::string> unshare{"unshare", "--user", "--map-root-user", "--mount"};
    std::vector<std::string> command = unshare;
    command.emplace_back("true");
    if (RunChild(command).exitCode != 0) {
        return;
    }
    command = unshare;
    const std::string peer = KORVEX_TUNNEL_PEER;
    for (const std::string& word :
         {std::string("sh"), std::string("-c"),
          "mount -t tmpfs -o size=4m tmpfs /dev/shm || exit 9\n"
          "export XDG_RUNTIME_DIR=/dev/shm/run; mkdir -m 700 $XDG_RUNTIME_DIR\n" +
              peer +
              " make images 24 1310720 && exit 8\n"
              "ls /dev/shm; df --output=used /dev/shm | tail -n 1\n" +
              peer + " make images 2 1310720 || exit 7\n"}) {
        command.push_back(word);
    }
    const ChildResult result = RunChild(command);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.error, HasSubstr("No space left on device"));
    EXPECT_THAT(result.output, ::testing::MatchesRegex("run\n +0\n"));
}

TEST_F(Owners, LeaveNothingBehindAfter10000Areas) {
    const std::size_t descriptors = Descriptors();
    for (int i = 0; i < 10000; ++i) {
        const auto writer = MakeArea("images", 2, kOwnedBytes);
        const auto reader = ReadArea("images");
        ASSERT_TRUE(Write(*writer, {"a"}, i, 100));
        const auto pinned = reader->Pin("a");
        ASSERT_TRUE(pinned);
        ASSERT_EQ(ContentOf(*pinned), Whole(i, 100));
    }
    EXPECT_EQ(Descriptors(), descriptors);
    EXPECT_EQ(Mappings(), 0U);
    EXPECT_THAT(AreaFiles(), IsEmpty());
}

TEST_F(Owners, LeaveNothingBehindAfter10000Damages) {
    const auto writer = MakeArea("images", 2, kOwnedBytes);
    const auto reader = ReadArea("images");
    const std::size_t descriptors = Descriptors();
    ASSERT_TRUE(Write(*writer, {"a"}, 1, 100));
    ASSERT_TRUE(Found(*reader, "a"));
    const std::size_t mappings = Mappings();
    const std::size_t opened = Descriptors();
    for (int i = 0; i < 10000; ++i) {
        ASSERT_TRUE(fs::remove(FileOf("images")));
        ASSERT_EQ(Found(*reader, "a"), std::nullopt);
        ASSERT_TRUE(Write(*writer, {"a"}, i, 100));
        ASSERT_TRUE(Found(*reader, "a"));
    }
    EXPECT_EQ(mappings, 2U);
    EXPECT_EQ(Mappings(), mappings);
    EXPECT_EQ(opened, descriptors + 1);
    EXPECT_EQ(Descriptors(), opened);
    EXPECT_EQ(AreaFiles().size(), 1U);
}

}  // namespace

}  // namespace Korvex3Sync::tests
