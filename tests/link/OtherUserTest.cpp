#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "link/RawSocket.h"
#include "support/ChildProcess.h"

#define KORVEX_REPLACES_C_FUNCTION extern "C" __attribute__((visibility("default")))

namespace {

std::atomic<bool> thisIsAnotherUser{false};
std::atomic<bool> peersAreOfAnotherUser{false};

template <class Function>
Function* NextOf(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// These take the place of the C library's functions in this program, so that the tests need no
// second user.

KORVEX_REPLACES_C_FUNCTION uid_t geteuid() noexcept {
    static auto* const next = NextOf<uid_t()>("geteuid");
    return next() + (thisIsAnotherUser ? 1 : 0);
}

KORVEX_REPLACES_C_FUNCTION int getsockopt(int socket, int level, int name, void* value,
                                          socklen_t* size) noexcept {
    static auto* const next = NextOf<int(int, int, int, void*, socklen_t*)>("getsockopt");
    const int result = next(socket, level, name, value, size);
    if (result == 0 && peersAreOfAnotherUser && level == SOL_SOCKET && name == SO_PEERCRED) {
        ++static_cast<ucred*>(value)->uid;
    }
    return result;
}

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

/// Sets a flag for a scope.
class Pretence {
public:
    explicit Pretence(std::atomic<bool>& flag) : m_flag(flag) { m_flag = true; }
    ~Pretence() { m_flag = false; }
    Pretence(const Pretence&) = delete;
    Pretence& operator=(const Pretence&) = delete;

private:
    std::atomic<bool>& m_flag;
};

class OtherUser : public ::testing::Test {
protected:
    /// The reason why there is no runtime folder; empty if there is one.
    static std::string Refusal() {
        std::string reason;
        return os::RuntimeFolder(reason).empty() ? reason : "";
    }

    Folders m_folders;
};

TEST_F(OtherUser, MakesTheRuntimeFolderUnfit) {
    ASSERT_EQ(Refusal(), "");
    {
        const Pretence other(thisIsAnotherUser);
        EXPECT_EQ(Refusal(),
                  "cannot use " + m_folders.Runtime().string() + ": it belongs to another user");
    }
    EXPECT_EQ(Refusal(), "");
}

TEST_F(OtherUser, IsRefusedByAServer) {
    const TestHub hub;
    const TestService service;
    const LogText log;
    {
        const Pretence other(peersAreOfAnotherUser);
        const RawSocket peer = RawSocket::Introduced(service.Path());
        EXPECT_TRUE(peer.WaitUntilClosed());
    }
    EXPECT_TRUE(log.Contains("the other end belongs to another user"));
    Client client;
    EXPECT_TRUE(WaitUntilAnswers(client));
}

TEST_F(OtherUser, IsRefusedByAClient) {
    const RawSocket hub = RawSocket::Listening(SocketOf(kHubSocket));
    const LogText log;
    const Pretence other(peersAreOfAnotherUser);
    const Client client;
    RawSocket peer = hub.Accept();
    EXPECT_FALSE(peer.Receive());
    EXPECT_TRUE(log.Contains("the other end belongs to another user"));
}

// The system keeps another user out before that. As root this is tried with another user; as any
// user, the permissions say so.
TEST_F(OtherUser, CannotReachTheSocket) {
    const TestHub hub;
    const std::string path = SocketOf(kHubSocket);
    struct stat folder {};
    struct stat socket {};
    ASSERT_EQ(::stat(m_folders.Runtime().c_str(), &folder), 0);
    ASSERT_EQ(::stat(path.c_str(), &socket), 0);
    EXPECT_EQ(folder.st_mode & 0777U, 0700U);
    EXPECT_EQ(socket.st_mode & 0077U, 0U);
    if (::geteuid() == 0) {
        const ChildResult tried = RunChild(
            {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "test", "-S", path});
        EXPECT_NE(tried.exitCode, 0);
        EXPECT_EQ(RunChild({"test", "-S", path}).exitCode, 0);
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
