#include <gtest/gtest.h>

#include <QThread>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "link/RawSocket.h"
#include "link/SignalReceiver.h"
#include "link/WireSamples.h"
#include "platform/include/SyncInterface.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

/// A service that notes its clients.
class Signals : public ::testing::Test {
protected:
    ClientId WaitForClient(std::size_t count = 1) {
        EXPECT_TRUE(WaitUntil([&] {
            const std::lock_guard lock(m_mutex);
            return m_clients.size() >= count;
        }));
        const std::lock_guard lock(m_mutex);
        return m_clients.empty() ? 0 : m_clients.back();
    }
    bool HasGone(ClientId client) {
        const std::lock_guard lock(m_mutex);
        return m_gone.contains(client);
    }
    static Signal Numbered(int number) {
        return {Signal::Kind::Callback, "plugin", "name", {number}, "1"};
    }

    Folders m_folders;
    std::mutex m_mutex;
    std::vector<ClientId> m_clients;
    std::vector<long> m_processes;
    std::set<ClientId> m_gone;
    TestHub m_hub;
    TestService m_service{[this](Server& server) {
        server.OnClient(
            [this](ClientId client, long process) {
                const std::lock_guard lock(m_mutex);
                m_clients.push_back(client);
                m_processes.push_back(process);
            },
            [this](ClientId client) {
                const std::lock_guard lock(m_mutex);
                m_gone.insert(client);
            });
    }};
};

TEST_F(Signals, ArriveAtAReceiverOnAnotherThreadInOrderAndOnce) {
    constexpr int kCount = 2000;
    SyncInterface sync;
    std::vector<int> numbers;  // of the receiver's thread
    std::atomic<int> received{0};
    std::atomic<bool> asSent{true};
    std::atomic<const QThread*> thread{nullptr};
    SignalReceiver receiver([&](const QString& plugin, const QString& name,
                                const QList<QVariant>& list, const QString& version) {
        thread = QThread::currentThread();
        asSent = asSent && plugin == "plugin" && name == "name" && version == "1";
        numbers.push_back(list.value(0).toInt());
        ++received;
    });
    receiver.Connect(sync);
    const ClientId client = WaitForClient();
    for (int i = 0; i < kCount; ++i) {
        ASSERT_TRUE(WaitUntil([&] { return m_service.Server().Send(client, Numbered(i)); }));
    }
    ASSERT_TRUE(WaitUntil([&] { return received == kCount; }));
    EXPECT_TRUE(asSent);
    EXPECT_EQ(thread, receiver.Thread());
    for (int i = 0; i < kCount; ++i) {
        ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
}

TEST_F(Signals, CarryEveryElementAndAreOfTwoKinds) {
    SyncInterface sync;
    std::mutex mutex;
    QList<QVariantList> messages;
    QList<QVariantList> callbacks;
    const auto note = [&mutex](QList<QVariantList>& lists) {
        return [&](const QString&, const QString&, const QList<QVariant>& list, const QString&) {
            const std::lock_guard lock(mutex);
            lists.append(list);
        };
    };
    QObject::connect(&sync, &SyncInterface::sendMessage, note(messages));
    QObject::connect(&sync, &SyncInterface::sendCallback, note(callbacks));
    const ClientId client = WaitForClient();
    const auto samples = WireSamples<QVariantList>::All();
    for (const QVariantList& list : samples) {
        EXPECT_TRUE(m_service.Server().Send(client, {Signal::Kind::Message, "p", "n", list, "v"}));
    }
    EXPECT_TRUE(m_service.Server().Send(client, Numbered(7)));
    ASSERT_TRUE(WaitUntil([&] {
        const std::lock_guard lock(mutex);
        return callbacks.size() == 1;
    }));
    EXPECT_EQ(messages, QList<QVariantList>(samples.begin(), samples.end()));
    EXPECT_EQ(callbacks.first(), QVariantList{7});
}

TEST_F(Signals, ArriveBetweenCallsOfOtherThreads) {
    std::atomic<int> received{0};
    SyncInterface sync;
    QObject::connect(&sync, &SyncInterface::sendCallback, [&] { ++received; });
    const ClientId client = WaitForClient();
    std::atomic<int> good{0};
    std::vector<std::thread> callers;
    for (int thread = 0; thread < 4; ++thread) {
        callers.emplace_back([&] {
            for (int i = 0; i < 300; ++i) {
                int count = 0;
                good += sync.getCameraCount("KV00", count) == STATUS_SUCCESS && count == 4;
            }
        });
    }
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(WaitUntil([&] { return m_service.Server().Send(client, Numbered(i)); }));
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(good, 4 * 300);
    EXPECT_TRUE(WaitUntil([&] { return received == 1000; }));
}

TEST_F(Signals, ThatAClientDoesNotReadAreLostAndCounted) {
    const LogText log;
    std::atomic<int> received{0};
    Client reading(Client::Target::Service, {[&](const Signal&) { ++received; }, {}});
    const ClientId good = WaitForClient();
    int sent = 0;
    int lost = 0;
    ClientId slow = 0;
    {
        RawSocket stuck = RawSocket::Introduced(m_service.Path());
        slow = WaitForClient(2);
        ASSERT_NE(slow, good);
        Signal large = Numbered(0);
        large.pluginName = QString(500, 'x');
        int toGood = 0;
        while (lost < 10) {
            large.list = {sent};
            (m_service.Server().Send(slow, large) ? sent : lost) += 1;
            ASSERT_TRUE(WaitUntil([&] { return m_service.Server().Send(good, large); }));
            ++toGood;
        }
        // The other client has everything.
        EXPECT_TRUE(WaitUntil([&] { return received == toGood; }));
        // What was taken arrives in order, and there is room again.
        int expected = 0;
        while (expected < sent) {
            const auto message = stuck.Receive();
            ASSERT_TRUE(message);
            if (const auto* const signal = std::get_if<Signal>(&*message)) {
                ASSERT_EQ(signal->list.value(0).toInt(), expected);
                ++expected;
            }
        }
        EXPECT_TRUE(WaitUntil([&] { return m_service.Server().Send(slow, Numbered(1)); }));
    }
    const std::string name = "Client " + std::to_string(slow);
    EXPECT_TRUE(WaitUntil([&] { return log.Contains(name + " has lost 10 signals"); }));
    EXPECT_EQ(log.Count(name + " does not keep up"), 1);
}

TEST_F(Signals, OfManyThreadsArriveWholeAndInOrderAtASlowReader) {
    constexpr int kSenders = 4;
    RawSocket slow = RawSocket::Introduced(m_service.Path());
    const ClientId client = WaitForClient();
    // Each sender goes on until the client's messages have waited twice, so that what is sent at
    // once and what has waited mix.
    std::atomic<int> refusals{0};
    std::vector<int> sent(kSenders);
    std::vector<std::thread> senders;
    for (int sender = 0; sender < kSenders; ++sender) {
        senders.emplace_back([&, sender] {
            Signal signal = Numbered(sender);
            signal.pluginName = QString(300 * (sender + 1), 'x');
            int& count = sent[static_cast<std::size_t>(sender)];
            for (int refused = 0; refused < 2;) {
                signal.list = {sender, count};
                if (m_service.Server().Send(client, signal)) {
                    ++count;
                    continue;
                }
                ++refused;
                ++refusals;
                EXPECT_TRUE(WaitUntil([&] { return m_service.Server().Send(client, signal); }));
                ++count;
            }
        });
    }
    EXPECT_TRUE(WaitUntil([&] { return refusals > 0; }));
    std::vector<int> received(kSenders);
    std::thread reader([&] {
        while (const std::optional<Message> message = slow.Receive()) {
            if (const auto* const signal = std::get_if<Signal>(&*message)) {
                if (signal->list.value(0).toInt() < 0) {
                    return;
                }
                int& next = received.at(signal->list.value(0).toUInt());
                EXPECT_EQ(signal->list.value(1).toInt(), next);
                ++next;
            }
        }
        ADD_FAILURE() << "the connection has ended";
    });
    for (std::thread& sender : senders) {
        sender.join();
    }
    EXPECT_TRUE(WaitUntil([&] { return m_service.Server().Send(client, Numbered(-1)); }));
    reader.join();
    EXPECT_EQ(received, sent);
}

TEST_F(Signals, ReachNobodyWhoHasGone) {
    ClientId client = 0;
    {
        const RawSocket peer = RawSocket::Introduced(m_service.Path());
        client = WaitForClient();
        EXPECT_EQ(m_processes.back(), os::CurrentProcess());
        EXPECT_TRUE(m_service.Server().Send(client, Numbered(1)));
    }
    ASSERT_TRUE(WaitUntil([&] { return HasGone(client); }));
    EXPECT_FALSE(m_service.Server().Send(client, Numbered(2)));
    EXPECT_FALSE(m_service.Server().Send(client + 1, Numbered(2)));
    EXPECT_FALSE(m_service.Server().Send(0, Numbered(2)));
}

TEST_F(Signals, WhoseReceiverThrowsHarmNobody) {
    std::atomic<int> received{0};
    Client client(Client::Target::Service, {[&](const Signal&) {
                                                ++received;
                                                throw std::runtime_error("a fault of the host");
                                            },
                                            {}});
    const ClientId id = WaitForClient();
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(m_service.Server().Send(id, Numbered(i)));
        ASSERT_TRUE(WaitUntil([&] { return received == i; }));
        EXPECT_TRUE(Answers(client));
    }
}

TEST_F(Signals, OfMoreThanAMessageAreLost) {
    const RawSocket peer = RawSocket::Introduced(m_service.Path());
    Signal large = Numbered(1);
    large.pluginName = QString(600'000, 'x');
    const ClientId client = WaitForClient();
    EXPECT_FALSE(m_service.Server().Send(client, large));
    EXPECT_TRUE(m_service.Server().Send(client, Numbered(2)));
}

TEST_F(Signals, OfTwoClientsHaveDifferentIds) {
    std::set<ClientId> ids;
    for (std::size_t i = 1; i <= 20; ++i) {
        const RawSocket peer = RawSocket::Introduced(m_service.Path());
        const ClientId client = WaitForClient(i);
        EXPECT_NE(client, 0U);
        EXPECT_TRUE(ids.insert(client).second);
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
