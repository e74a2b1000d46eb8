#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "platform/os/Peer.h"
#include "platform/os/UserFolders.h"
#include "support/Environment.h"

namespace Korvex3Sync::tests {
namespace {

/// An environment variable with another value, or without one, for a scope.
class Variable {
public:
    Variable(const char* name, const std::optional<std::string>& value) : m_name(name) {
        if (const char* const before = std::getenv(name)) {
            m_before = before;
        }
        Set(value);
    }
    ~Variable() { Set(m_before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Set(const std::optional<std::string>& value) const {
        if (value) {
            SetVariable(m_name, *value);
        } else {
            RemoveVariable(m_name);
        }
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

class UserFolders : public ::testing::Test {
protected:
    UserFolders() {
        char name[] = "/tmp/k3foldersXXXXXX";
        EXPECT_NE(::mkdtemp(name), nullptr);
        m_base = name;
        m_folder = m_base / "korvex3sync";
    }
    ~UserFolders() override { std::filesystem::remove_all(m_base); }

    void ExpectRefused(const std::string& why) {
        const Variable runtime("XDG_RUNTIME_DIR", m_base.string());
        std::string reason;
        EXPECT_EQ(os::RuntimeFolder(reason), "");
        EXPECT_EQ(reason, "cannot use " + m_folder.string() + ": " + why);
    }

    std::filesystem::path m_base;
    std::filesystem::path m_folder;
};

TEST_F(UserFolders, ForSocketsAreMadeForThisUserAlone) {
    const Variable runtime("XDG_RUNTIME_DIR", m_base.string());
    for (int i = 0; i < 2; ++i) {  // made, then found
        std::string reason;
        EXPECT_EQ(os::RuntimeFolder(reason), m_folder) << reason;
        struct stat status {};
        ASSERT_EQ(::stat(m_folder.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
    }
}

TEST_F(UserFolders, ForSocketsAreInTmpWithoutARuntimeFolder) {
    const std::string expected = "/tmp/korvex3sync-" + std::to_string(::geteuid());
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("relative/path")}) {
        const Variable runtime("XDG_RUNTIME_DIR", value);
        std::string reason;
        EXPECT_EQ(os::RuntimeFolder(reason), expected) << reason;
    }
}

TEST_F(UserFolders, ThatOthersCanEnterAreRefused) {
    for (const mode_t mode : {0755U, 0701U, 0710U, 0702U, 0740U}) {
        std::filesystem::remove_all(m_folder);
        ASSERT_EQ(::mkdir(m_folder.c_str(), 0700), 0);
        ASSERT_EQ(::chmod(m_folder.c_str(), mode), 0);
        char text[8];
        std::snprintf(text, sizeof(text), "%04o", mode);
        ExpectRefused(std::string("other users can enter it (mode ") + text + "; it must be 0700)");
    }
}

TEST_F(UserFolders, ThatAreLinksOrFilesAreRefused) {
    const auto elsewhere = m_base / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    ASSERT_EQ(::chmod(elsewhere.c_str(), 0700), 0);
    std::filesystem::create_directory_symlink(elsewhere, m_folder);
    ExpectRefused("it is a symbolic link");
    std::filesystem::remove(m_folder);
    std::ofstream(m_folder) << "file";
    ExpectRefused("it is not a folder");
}

TEST_F(UserFolders, ThatCannotBeMadeSayWhy) {
    const Variable runtime("XDG_RUNTIME_DIR", (m_base / "missing").string());
    std::string reason;
    EXPECT_EQ(os::RuntimeFolder(reason), "");
    EXPECT_EQ(reason, "cannot create " + (m_base / "missing/korvex3sync").string() +
                          ": No such file or directory");
    reason.clear();
    EXPECT_EQ(os::SocketPath("hub", reason), "");
    EXPECT_NE(reason, "");
}

TEST_F(UserFolders, GiveSocketsAPathThatTheSystemTakes) {
    std::string reason;
    {
        const Variable runtime("XDG_RUNTIME_DIR", m_base.string());
        EXPECT_EQ(os::SocketPath("hub", reason), m_folder / "hub");
    }
    // The longest path, and one that is a character longer.
    const std::size_t longest = 98;
    const std::string rest = "/korvex3sync/hub";
    const std::size_t fill = longest - m_base.string().size() - rest.size() - 1;
    for (const std::size_t more : {0U, 1U}) {
        const auto base = m_base / std::string(fill + more, 'x');
        std::filesystem::create_directory(base);
        const Variable runtime("XDG_RUNTIME_DIR", base.string());
        const std::string path = os::SocketPath("hub", reason).string();
        if (more == 0) {
            EXPECT_EQ(path.size(), longest) << reason;
        } else {
            EXPECT_EQ(path, "");
            EXPECT_EQ(reason, "the socket path " + base.string() + rest +
                                  " is longer than 98 characters; set XDG_RUNTIME_DIR to a "
                                  "shorter path");
        }
    }
}

TEST_F(UserFolders, ForLogsAreWhereTheUserWantsThem) {
    std::string reason;
    {
        const Variable state("XDG_STATE_HOME", (m_base / "state").string());
        EXPECT_EQ(os::LogFolder(reason), m_base / "state/korvex3sync");
    }
    const Variable state("XDG_STATE_HOME", std::nullopt);
    const Variable home("HOME", m_base.string());
    EXPECT_EQ(os::LogFolder(reason), m_base / ".local/state/korvex3sync");
    EXPECT_TRUE(std::filesystem::is_directory(m_base / ".local/state/korvex3sync"));
}

TEST_F(UserFolders, ForLogsAreThoseForSocketsIfNothingElseCanBeWritten) {
    const Variable runtime("XDG_RUNTIME_DIR", m_base.string());
    const Variable home("HOME", std::nullopt);
    std::string reason;
    {
        const Variable state("XDG_STATE_HOME", "/proc/nowhere");
        EXPECT_EQ(os::LogFolder(reason), m_folder);
    }
    const Variable state("XDG_STATE_HOME", std::nullopt);
    EXPECT_EQ(os::LogFolder(reason), m_folder);
}

TEST(Peer, IsTheProcessAtTheOtherEnd) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const auto peer = os::PeerOf(ends[0]);
    ASSERT_TRUE(peer);
    EXPECT_EQ(peer->process, ::getpid());
    EXPECT_TRUE(peer->sameUser);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(Peer, OfSomethingElseIsUnknown) {
    EXPECT_FALSE(os::PeerOf(-1));
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    EXPECT_FALSE(os::PeerOf(pipe[0]));
    ::close(pipe[0]);
    ::close(pipe[1]);
}

}  // namespace
}  // namespace Korvex3Sync::tests
