#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "link/LinkSession.h"
#include "link/RawSocket.h"
#include "platform/link/hub/HubQuery.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

class Hub : public ::testing::Test {
protected:
    static std::vector<Registration> Services() {
        HubState state;
        EXPECT_TRUE(QueryHub(state));
        return state.services;
    }

    Folders m_folders;
};

TEST_F(Hub, SaysWhoItIsAndWhomItKnows) {
    const TestHub hub;
    HubState state;
    ASSERT_TRUE(QueryHub(state));
    EXPECT_EQ(state.version, "1.2.3");
    EXPECT_EQ(state.process, os::CurrentProcess());
    EXPECT_GE(state.uptimeMs, 0);
    EXPECT_TRUE(state.services.empty());
    const TestService service;
    ASSERT_TRUE(WaitUntil([] { return Services().size() == 1; }));
    const Registration known = Services().front();
    EXPECT_EQ(known.service, kServiceName);
    EXPECT_EQ(known.socket.toStdString(), service.Path());
    EXPECT_EQ(known.process, os::CurrentProcess());
    EXPECT_EQ(known.version, kProtocolVersion);
    EXPECT_FALSE(known.instance.isEmpty());
    HubState later;
    ASSERT_TRUE(WaitUntil([&] { return QueryHub(later) && later.uptimeMs > state.uptimeMs; }));
}

TEST_F(Hub, ForgetsAServiceThatHasGone) {
    const TestHub hub;
    std::optional<TestService> service(std::in_place);
    ASSERT_TRUE(WaitUntil([] { return Services().size() == 1; }));
    const QString first = Services().front().instance;
    service.reset();
    ASSERT_TRUE(WaitUntil([] { return Services().empty(); }));
    service.emplace();
    ASSERT_TRUE(WaitUntil([] { return Services().size() == 1; }));
    EXPECT_NE(Services().front().instance, first);
}

TEST_F(Hub, IsNotThereForAQuestion) {
    HubState state;
    EXPECT_FALSE(QueryHub(state));
    EXPECT_FALSE(RequestHubStop());
}

TEST_F(Hub, EndsOnRequest) {
    os::Event asked;
    HubServer hub("1", [&asked] { asked.Set(); });
    std::string reason;
    ASSERT_TRUE(hub.Listen(reason)) << reason;
    EXPECT_TRUE(RequestHubStop());
    EXPECT_TRUE(asked.IsSet());
    hub.Close();
    EXPECT_FALSE(RequestHubStop());
}

TEST_F(Hub, IsCalledForOnlyWhenItIsMissing) {
    std::atomic<int> calls{0};
    std::optional<TestHub> hub(std::in_place);
    const HubLink registered(RegistrationAt("/tmp/none"), [&calls] { ++calls; });
    ASSERT_TRUE(WaitUntil([] { return Services().size() == 1; }));
    EXPECT_EQ(calls, 0);
    const auto start = std::chrono::steady_clock::now();
    hub.reset();
    ASSERT_TRUE(WaitUntil([&] { return calls > 0; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(250));
}

TEST_F(Hub, IsStartedByAServiceThatFindsNone) {
    std::optional<TestHub> hub;
    std::atomic<bool> started{false};
    {
        const HubLink registered(RegistrationAt("/tmp/none"), [&] {
            hub.emplace();
            started = true;
        });
        ASSERT_TRUE(WaitUntil([&] { return started && Services().size() == 1; }));
    }
    ASSERT_TRUE(WaitUntil([] { return Services().empty(); }));
}

TEST_F(Hub, IsCalledForAgainWhenItDidNotStart) {
    std::atomic<int> calls{0};
    const HubLink registered(RegistrationAt("/tmp/none"), [&calls] { ++calls; });
    EXPECT_TRUE(WaitUntil([&] { return calls == 2; }));
}

TEST_F(Hub, DoesNotHoldUpTheEndOfAService) {
    for (int i = 0; i < 20; ++i) {
        const HubLink registered(RegistrationAt("/tmp/none"), [] {});
    }
    const TestHub hub;
    for (int i = 0; i < 20; ++i) {
        const HubLink registered(RegistrationAt("/tmp/none"), [] {});
    }
    EXPECT_TRUE(WaitUntil([] { return Services().empty(); }));
}

class Listening : public Hub {};

TEST_F(Listening, OnASocketThatSomebodyUsesIsRefused) {
    const std::string path = SocketOf("x");
    Server first(path, Role::Service);
    Server second(path, Role::Service);
    std::string reason;
    ASSERT_TRUE(first.Listen(reason)) << reason;
    EXPECT_FALSE(second.Listen(reason));
    EXPECT_EQ(reason, "another process listens on " + path);
    const RawSocket peer = RawSocket::Introduced(path);
    first.Close();
    EXPECT_TRUE(peer.WaitUntilClosed());
    EXPECT_TRUE(second.Listen(reason)) << reason;
}

TEST_F(Listening, NeedsAFolder) {
    Server server("/nowhere/at/all", Role::Service);
    std::string reason;
    EXPECT_FALSE(server.Listen(reason));
    EXPECT_NE(reason.find("cannot listen on /nowhere/at/all: "), std::string::npos);
}

}  // namespace
}  // namespace Korvex3Sync::tests
