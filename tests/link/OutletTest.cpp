#include "platform/link/channel/Outlet.h"

#include <gtest/gtest.h>

#include <sys/socket.h>

#include <optional>
#include <utility>

#include "link/RawSocket.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

constexpr qint64 kAnyAmount = 1'000'000'000;

/// An outlet to a peer that reads only when the test asks it to. The test acts as the I/O thread.
class OutletTest : public ::testing::Test {
protected:
    OutletTest() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        m_socket.emplace(ends[0]);
        m_peer.emplace(ends[1]);
        m_outlet.Open(ends[0]);
    }

    static QByteArray Numbered(std::uint32_t number) {
        return Encoded(CallMessage{number, 1, QByteArray(10'000, 'x')});
    }
    /// Sends until the system takes no more.
    void Fill() {
        while (m_outlet.Send(Numbered(m_sent++), kAnyAmount) == Outlet::Result::Sent) {
        }
    }
    void ExpectNextAtThePeer(std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i, ++m_received) {
            const std::optional<Message> message = m_peer->Receive();
            ASSERT_TRUE(message);
            ASSERT_TRUE(std::holds_alternative<CallMessage>(*message));
            ASSERT_EQ(std::get<CallMessage>(*message).number, m_received);
        }
    }

    std::optional<RawSocket> m_socket;
    std::optional<RawSocket> m_peer;
    Outlet m_outlet;
    std::uint32_t m_sent = 0;
    std::uint32_t m_received = 0;
};

TEST_F(OutletTest, SendsNothingPastWhatWaitsInTheSocket) {
    Fill();
    const QByteArray inSocket = m_outlet.TakeWaiting();
    ASSERT_FALSE(inSocket.isEmpty());
    ExpectNextAtThePeer(m_sent - 1);  // there is room again
    EXPECT_EQ(m_outlet.Send(Numbered(m_sent++), kAnyAmount), Outlet::Result::Waits);
    m_socket->Send(inSocket);
    m_outlet.SetInSocket(0);
    EXPECT_EQ(m_outlet.Send(Numbered(m_sent++), kAnyAmount), Outlet::Result::Waits);
    m_socket->Send(m_outlet.TakeWaiting());
    m_outlet.SetInSocket(0);
    EXPECT_EQ(m_outlet.Send(Numbered(m_sent++), kAnyAmount), Outlet::Result::Sent);
    ExpectNextAtThePeer(m_sent - m_received);
}

TEST_F(OutletTest, CountsWhatWaitsAndWhatIsInTheSocket) {
    Fill();
    const qint64 waiting = m_outlet.TakeWaiting().size();
    const QByteArray message = Numbered(m_sent);
    EXPECT_EQ(m_outlet.Send(message, waiting + message.size() - 1), Outlet::Result::Refused);
    EXPECT_EQ(m_outlet.Send(message, waiting + message.size()), Outlet::Result::Waits);
    EXPECT_EQ(m_outlet.Send(message, waiting + 2 * message.size()), Outlet::Result::Refused);
    EXPECT_FALSE(m_outlet.IsOverloaded());
}

TEST_F(OutletTest, IsOverloadedByMessagesThatMustNotGetLost) {
    Fill();
    const QByteArray large(static_cast<int>(kMostMessageBytes), 'x');
    for (int i = 0; i < 7; ++i) {
        EXPECT_TRUE(m_outlet.SendOrFail(large));
        EXPECT_FALSE(m_outlet.IsOverloaded()) << i;
    }
    EXPECT_TRUE(m_outlet.SendOrFail(large));
    EXPECT_TRUE(m_outlet.IsOverloaded());
    m_outlet.TakeWaiting();
    m_outlet.SetInSocket(0);
    m_outlet.SendOrFail(Numbered(0));
    EXPECT_TRUE(m_outlet.IsOverloaded()) << "a message is lost for good";
}

TEST_F(OutletTest, RefusesMessagesBeforeItIsOpenedAndAfterItIsClosed) {
    Outlet closed;
    EXPECT_EQ(closed.Send(Numbered(0), kAnyAmount), Outlet::Result::Refused);
    EXPECT_TRUE(closed.SendOrFail(Numbered(0)));
    EXPECT_FALSE(closed.IsOverloaded());
    m_outlet.Close();
    EXPECT_EQ(m_outlet.Send(Numbered(0), kAnyAmount), Outlet::Result::Refused);
    m_socket.reset();
    EXPECT_TRUE(m_peer->WaitUntilClosed());
}

TEST_F(OutletTest, OutlivesItsPeer) {
    m_peer.reset();
    EXPECT_EQ(m_outlet.Send(Numbered(0), kAnyAmount), Outlet::Result::Waits);
}

}  // namespace
}  // namespace Korvex3Sync::tests
