#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "link/LinkSession.h"
#include "link/RawSocket.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

/// While this lives, the process gets no further descriptor. The limit stays above the number of
/// descriptors that a thread waits for, because poll() refuses more.
class NoDescriptors {
public:
    NoDescriptors() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &m_before), 0);
        rlimit few = m_before;
        few.rlim_cur = 256;
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        int taken = -1;
        while ((taken = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0) {
            m_taken.push_back(taken);
        }
        EXPECT_EQ(errno, EMFILE);
    }
    ~NoDescriptors() {
        for (const int taken : m_taken) {
            ::close(taken);
        }
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &m_before), 0);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_before{};
    std::vector<int> m_taken;
};

/// A server's socket as a file.
class SystemSocket : public ::testing::Test {
protected:
    Folders m_folders;
};

TEST_F(SystemSocket, ReplacesWhatADeadProcessLeft) {
    const std::string path = SocketOf("x");
    { const RawSocket dead = RawSocket::Listening(path); }
    ASSERT_TRUE(std::filesystem::is_socket(path));
    Server server(path, Role::Service);
    std::string reason;
    EXPECT_TRUE(server.Listen(reason)) << reason;
}

TEST_F(SystemSocket, ContinuesAfterTheSocketWasRemoved) {
    const TestHub hub;
    const TestService service;
    std::filesystem::remove(service.Path());
    std::filesystem::remove(SocketOf(kHubSocket));
    Client client;
    EXPECT_TRUE(WaitUntilAnswers(client));
}

TEST_F(SystemSocket, ContinuesAfterTheProcessRanOutOfDescriptors) {
    const std::string path = SocketOf("x");
    Server server(path, Role::Service);
    std::string reason;
    ASSERT_TRUE(server.Listen(reason)) << reason;
    {
        RawSocket peer;
        const NoDescriptors none;
        EXPECT_TRUE(peer.TryConnectTo(path));
        EXPECT_TRUE(peer.WaitUntilClosed());
    }
    EXPECT_TRUE(WaitUntil([&] {
        RawSocket peer;
        return peer.TryConnectTo(path) && peer.Receive().has_value();
    }));
}

TEST_F(SystemSocket, LeavesASocketForThisUserAlone) {
    const std::string path = SocketOf("x");
    Server server(path, Role::Service);
    std::string reason;
    ASSERT_TRUE(server.Listen(reason)) << reason;
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(path).permissions() & (perms::group_all | perms::others_all),
              perms::none);
    server.Close();
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace Korvex3Sync::tests
