#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "link/RawSocket.h"
#include "link/WireSamples.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/Seed.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

QByteArray LengthOf(std::uint32_t length) {
    ByteWriter out;
    out.Number(length);
    return out.Bytes();
}

QByteArray RandomBytes(std::mt19937& random, int size) {
    QByteArray bytes;
    for (int i = 0; i < size; ++i) {
        bytes.append(static_cast<char>(random()));
    }
    return bytes;
}

/// What a peer sends and why it is refused.
struct Refused {
    const char* name;
    QByteArray bytes;
    const char* reason;
};

/// Greetings that neither end takes.
std::vector<Refused> BadGreetings(Role good, Role bad) {
    QByteArray wrongMark = Encoded(Hello{kProtocolVersion, good, 1});
    wrongMark[1] = 'X';
    return {
        {"other version", Framed(Encoded(Hello{kProtocolVersion + 1, good, 1})),
         "protocol version 2"},
        {"wrong role", Framed(Encoded(Hello{kProtocolVersion, bad, 1})), "instead of a"},
        {"wrong mark", Framed(wrongMark), "not a greeting"},
        {"no length", LengthOf(0), "a message of 0 bytes"},
        {"length of 2 GB", LengthOf(0x80000000U), "a message of 2147483648 bytes"},
        {"long first message", LengthOf(kHelloBytes + 1), "a message of 19 bytes"},
        {"a call first", Framed(Encoded(CallMessage{1, 2, ""})), "not a greeting"},
        {"text", "GET / HTTP/1.1\r\n\r\n", "a message of"},
    };
}

/// A server with every operation, and a client beside the peers that are refused.
class RefusedPeers : public ::testing::Test {
protected:
    RefusedPeers() { EXPECT_TRUE(WaitUntilAnswers(m_client)); }

    static void AddEverything(Server& server) {
        ForEachOperation([&server]<class Op>() {
            if (Op::kNumber != GetCameraCount::kNumber) {
                server.On<Op>([](ClientId, const typename Op::In&, typename Op::Out&) {
                    return STATUS_SUCCESS;
                });
            }
        });
    }
    void ExpectRefused(const RawSocket& peer, const Refused& what) {
        SCOPED_TRACE(what.name);
        const int before = m_log.Count(what.reason);
        peer.Send(what.bytes);
        EXPECT_TRUE(peer.WaitUntilClosed());
        EXPECT_EQ(m_log.Count(what.reason), before + 1);
    }

    Folders m_folders;
    LogText m_log;
    TestHub m_hub;
    std::optional<TestService> m_service{std::in_place, AddEverything};
    Client m_client;
};

TEST_F(RefusedPeers, AreThoseWithoutAGoodGreeting) {
    for (const Refused& what : BadGreetings(Role::Client, Role::Service)) {
        ExpectRefused(RawSocket::Connected(m_service->Path()), what);
        ExpectRefused(RawSocket::Connected(SocketOf(kHubSocket)), what);
    }
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(RefusedPeers, AreThoseThatBreakTheRulesLater) {
    const std::vector<Refused> faults{
        {"second greeting", Framed(Encoded(Hello{})), "an unexpected message"},
        {"answer", Framed(Encoded(ReplyMessage{1, STATUS_SUCCESS, ""})), "an unexpected message"},
        {"signal", Framed(Encoded(Signal{})), "an unexpected message"},
        {"unknown type", Framed("\x09"), "a malformed message"},
        {"no length", LengthOf(0), "a message of 0 bytes"},
        {"length of 2 GB", LengthOf(0x80000000U), "a message of 2147483648 bytes"},
        {"length above the limit", LengthOf((1U << 20U) + 1), "a message of 1048577 bytes"},
        {"part of a call", Framed(Encoded(CallMessage{1, 2, ""}).left(6)), "a malformed message"},
    };
    for (const Refused& what : faults) {
        ExpectRefused(RawSocket::Introduced(m_service->Path()), what);
    }
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(RefusedPeers, AreThoseWhoseArgumentsAreCut) {
    int cuts = 0;
    ForEachOperation([&]<class Op>() {
        const QByteArray arguments = WireBytes(
            WireSamples<typename Op::In>::All()[1 % WireSamples<typename Op::In>::All().size()]);
        for (int size = 0; size < arguments.size(); ++size, ++cuts) {
            const RawSocket peer = RawSocket::Introduced(m_service->Path());
            peer.Send(Framed(Encoded(CallMessage{1, Op::kNumber, arguments.left(size)})));
            ASSERT_TRUE(peer.WaitUntilClosed()) << Op::kName << " " << size;
        }
    });
    EXPECT_GT(cuts, 300);
    EXPECT_EQ(m_log.Count("malformed arguments of operation"), cuts);
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(RefusedPeers, AreThoseThatEndInTheMiddleOfAMessage) {
    const QByteArray stream =
        Framed(Encoded(Hello{})) + Framed(Encoded(CallMessage{1, 2, WireBytes(QString("KV00"))}));
    for (int size = 1; size < stream.size(); ++size) {
        const RawSocket peer = RawSocket::Connected(m_service->Path());
        peer.Send(stream.left(size));
        peer.EndSending();
        ASSERT_TRUE(peer.WaitUntilClosed()) << size;
    }
    EXPECT_TRUE(Answers(m_client));
    m_service.reset();            // ends the thread that logs
    const int wholeMessages = 1;  // the cut after the greeting
    EXPECT_EQ(m_log.Count("in the middle of a message"), stream.size() - 1 - wholeMessages);
}

TEST_F(RefusedPeers, AreThoseThatSayNothing) {
    const os::ScopedTimeScale fast(0.05);
    const RawSocket peer = RawSocket::Connected(m_service->Path());
    EXPECT_TRUE(peer.WaitUntilClosed());
    EXPECT_TRUE(m_log.Contains("no first message within the limit"));
}

TEST_F(RefusedPeers, AreThoseThatSendAnything) {
    std::mt19937 random(support::Seed());
    for (int i = 0; i < 200; ++i) {
        const RawSocket peer = i % 2 == 0 ? RawSocket::Connected(m_service->Path())
                                          : RawSocket::Introduced(m_service->Path());
        peer.Send(RandomBytes(random, 1 + static_cast<int>(random() % 5000)));
        peer.EndSending();
        ASSERT_TRUE(peer.WaitUntilClosed());
        ASSERT_TRUE(Answers(m_client)) << i;
    }
}

TEST_F(RefusedPeers, AreGoneAtOnceAlsoDuringACall) {
    os::Event entered;
    os::Event leave;
    m_service.reset();
    m_service.emplace([&](Server& server) {
        server.On<GetConnectCameraCount>(
            [&](ClientId, const GetConnectCameraCount::In&, GetConnectCameraCount::Out&) {
                entered.Set();
                leave.Wait();
                return STATUS_SUCCESS;
            });
    });
    const RawSocket peer = RawSocket::Introduced(m_service->Path());
    peer.Send(Framed(Encoded(
        CallMessage{1, GetConnectCameraCount::kNumber, WireBytes(GetConnectCameraCount::In{})})));
    entered.Wait();
    ExpectRefused(peer, {"no length", LengthOf(0), "a message of 0 bytes"});
    leave.Set();
    m_service.reset();  // ends the call, which uses both events
}

TEST_F(RefusedPeers, AreThoseThatFlood) {
    const QByteArray call =
        Framed(Encoded(CallMessage{1, GetCameraCount::kNumber, WireBytes(QString("KV00"))}));
    QByteArray many;
    for (int i = 0; i < 2000; ++i) {
        many += call;
    }
    const RawSocket peer = RawSocket::Introduced(m_service->Path());
    int rounds = 0;
    while (peer.Send(many)) {
        ASSERT_LT(++rounds, 100'000);
        if (rounds % 50 == 0) {
            ASSERT_TRUE(Answers(m_client));
        }
    }
    EXPECT_TRUE(m_log.Contains("too many calls at the same time") ||
                m_log.Contains("the other end does not read"));
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(RefusedPeers, AreThoseBeyondTheMostConnections) {
    {
        std::vector<RawSocket> peers;
        for (int i = 0; i < 80; ++i) {
            peers.push_back(RawSocket::Introduced(m_service->Path()));
        }
        int refused = 0;
        for (RawSocket& peer : peers) {
            refused += peer.Receive() ? 0 : 1;  // the greeting of the server, or the end
        }
        EXPECT_EQ(refused, 80 + 1 - 64);
        EXPECT_TRUE(Answers(m_client));
    }
    Client later;
    EXPECT_TRUE(WaitUntilAnswers(later));
}

/// Services that a client refuses; afterwards it finds a good one.
class RefusedServices : public ::testing::Test {
protected:
    void ExpectRefused(const QByteArray& bytes, const char* reason) {
        SCOPED_TRACE(reason);
        Folders folders;
        const LogText log;
        TestHub hub;
        const std::string path = SocketOf("broken");
        const RawSocket listening = RawSocket::Listening(path);
        auto registered = std::make_unique<HubLink>(RegistrationAt(path), [] {});
        Client client;
        {
            const RawSocket peer = listening.Accept();
            peer.Send(bytes);
            EXPECT_TRUE(peer.WaitUntilClosed());
            EXPECT_TRUE(WaitUntil([&] { return log.Contains(reason); })) << reason;
        }
        registered.reset();
        const TestService service;
        EXPECT_TRUE(WaitUntilAnswers(client));
    }
};

TEST_F(RefusedServices, AreThoseWithoutAGoodGreeting) {
    for (const Refused& what : BadGreetings(Role::Service, Role::Hub)) {
        ExpectRefused(what.bytes, what.reason);
    }
}

TEST_F(RefusedServices, AreThoseThatBreakTheRulesLater) {
    const QByteArray hello = Framed(Encoded(Hello{kProtocolVersion, Role::Service, 1}));
    ExpectRefused(hello + Framed(Encoded(Hello{})), "an unexpected message");
    ExpectRefused(hello + Framed(Encoded(CallMessage{1, 2, ""})), "an unexpected message");
    ExpectRefused(hello + Framed("\x09"), "a malformed message");
    ExpectRefused(hello + LengthOf(0x80000000U), "a message of 2147483648 bytes");
    ExpectRefused(hello + Framed(Encoded(Signal{}).left(5)), "a malformed message");
}

/// The same for hubs.
class RefusedHubs : public ::testing::Test {
protected:
    static void ExpectRefused(const QByteArray& bytes, const char* reason) {
        SCOPED_TRACE(reason);
        Folders folders;
        const LogText log;
        const std::string path = SocketOf(kHubSocket);
        Client client;
        {
            const RawSocket listening = RawSocket::Listening(path);
            const RawSocket peer = listening.Accept();
            peer.Send(bytes);
            EXPECT_TRUE(peer.WaitUntilClosed());
            EXPECT_TRUE(WaitUntil([&] { return log.Contains(reason); })) << reason;
        }
        TestHub hub;
        const TestService service;
        EXPECT_TRUE(WaitUntilAnswers(client));
    }
};

TEST_F(RefusedHubs, AreThoseWithoutAGoodGreeting) {
    for (const Refused& what : BadGreetings(Role::Hub, Role::Service)) {
        ExpectRefused(what.bytes, what.reason);
    }
}

TEST_F(RefusedHubs, AreThoseThatAnswerNonsense) {
    const QByteArray hello = Framed(Encoded(Hello{kProtocolVersion, Role::Hub, 1}));
    ExpectRefused(hello + Framed(Encoded(Signal{})), "an unexpected message");
    ExpectRefused(hello + Framed(Encoded(ReplyMessage{1, STATUS_SUCCESS, "x"})),
                  "a malformed answer");
}

TEST_F(RefusedHubs, AreThoseThatDoNotAnswer) {
    const os::ScopedTimeScale fast(0.2);
    ExpectRefused(Framed(Encoded(Hello{kProtocolVersion, Role::Hub, 1})),
                  "no answer within the limit");
}

}  // namespace
}  // namespace Korvex3Sync::tests
