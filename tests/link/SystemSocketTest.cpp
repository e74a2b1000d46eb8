#include <gtest/gtest.h>

#include <sys/resource.h>

#include <filesystem>
#include <string>

#include "link/LinkSession.h"
#include "link/RawSocket.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

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
        rlimit limit{};
        ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
        rlimit none = limit;
        none.rlim_cur = 0;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
        EXPECT_TRUE(peer.TryConnectTo(path));
        peer.WaitUntilClosed();
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
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
