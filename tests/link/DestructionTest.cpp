#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "link/LinkSession.h"
#include "link/RawSocket.h"
#include "link/SignalReceiver.h"
#include "platform/include/SyncInterface.h"
#include "platform/link/WorkerPool.h"
#include "platform/os/Event.h"
#include "support/BlockingCall.h"
#include "support/ThreadState.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::BlockingCall;
using support::WaitUntil;

// Hub and service have two pools each, which start their threads when they need them.
constexpr std::size_t kPoolThreads = 4 * WorkerPool::kMostThreads;

class Destruction : public ::testing::Test {
protected:
    ~Destruction() override { m_go.Set(); }

    /// A call that returns when the test lets it.
    static std::future<RETSTATUS> SlowCall(Client& client) {
        return std::async(std::launch::async, [&client] {
            GetVideoTriggerPeriod::Out out;
            return client.Call<GetVideoTriggerPeriod>({1}, out);
        });
    }

    Folders m_folders;
    os::Event m_go;
    std::atomic<int> m_running{0};
    std::atomic<ClientId> m_client{0};
    TestHub m_hub;
    std::optional<TestService> m_service{
        std::in_place, [this](Server& server) {
            server.On<GetVideoTriggerPeriod>(
                [this](ClientId, const GetVideoTriggerPeriod::In&, GetVideoTriggerPeriod::Out&) {
                    ++m_running;
                    m_go.Wait();
                    --m_running;
                    return STATUS_SUCCESS;
                });
            server.OnClient([this](ClientId client, long) { m_client = client; }, {});
        }};
};

TEST_F(Destruction, OfAClientEndsItsCalls) {
    auto client = std::make_unique<Client>();
    ASSERT_TRUE(WaitUntilAnswers(*client));
    std::vector<std::future<RETSTATUS>> calls;
    for (int i = 0; i < 8; ++i) {
        calls.push_back(SlowCall(*client));
    }
    ASSERT_TRUE(WaitUntil([this] { return m_running == 8; }));
    client.reset();
    for (auto& call : calls) {
        EXPECT_EQ(call.get(), STATUS_FAILED);
    }
}

TEST_F(Destruction, OfAClientEndsACallThatWaitsForTheService) {
    m_service.reset();
    auto client = std::make_unique<Client>();
    RETSTATUS status = STATUS_SUCCESS;
    BlockingCall call([&status, &calling = *client] {
        GetCamerasInformation::Out out;
        status = calling.Call<GetCamerasInformation>({"KV00"}, out);
    });
    ASSERT_TRUE(call.WaitUntilBlocked());
    client.reset();
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_FAILED);
}

TEST_F(Destruction, MayMeetAnyMomentOfASession) {
    m_go.Set();
    for (int round = 0; round < 60; ++round) {
        Client client;
        std::vector<std::thread> callers;
        std::atomic<int> begun{0};
        for (int i = 0; i < 3; ++i) {
            callers.emplace_back([&] {
                for (int call = 0; call < round % 10; ++call) {
                    ++begun;
                    Answers(client);
                }
            });
        }
        if (round % 2 == 0) {
            WaitUntil([&] { return begun >= round % 5; });
        }
        for (std::thread& caller : callers) {
            caller.join();
        }
    }
    Client client;
    EXPECT_TRUE(WaitUntilAnswers(client));
}

TEST_F(Destruction, OfAnObjectEndsItsSignals) {
    std::atomic<int> received{0};
    SignalReceiver receiver([&received](const QString&, const QString&, const QList<QVariant>&,
                                        const QString&) { ++received; });
    std::atomic<bool> stop{false};
    std::thread sender([&] {
        while (!stop) {
            if (!m_service->Server().Send(m_client,
                                          {Signal::Kind::Callback, "p", "n", {1, "x"}, "v"})) {
                // Trying again at once would take a processor from those who receive.
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    for (int round = 0; round < 50; ++round) {
        SyncInterface sync;
        receiver.Connect(sync);
        const int before = received;
        if (round % 2 == 0) {
            EXPECT_TRUE(WaitUntil([&] { return received > before + 3; }));
        }
    }
    stop = true;
    sender.join();
    EXPECT_GT(received, 0);
}

TEST_F(Destruction, OfAServiceWaitsForItsHandlers) {
    Client client;
    ASSERT_TRUE(WaitUntilAnswers(client));
    auto call = SlowCall(client);
    ASSERT_TRUE(WaitUntil([this] { return m_running == 1; }));
    EXPECT_FALSE(m_service->Server().Close(std::chrono::milliseconds(1)));
    EXPECT_EQ(call.get(), STATUS_FAILED);
    EXPECT_EQ(m_running, 1);
    BlockingCall end([this] { m_service.reset(); });
    ASSERT_TRUE(end.WaitUntilBlocked());
    m_go.Set();
    ASSERT_TRUE(end.WaitUntilReturned());
    EXPECT_EQ(m_running, 0);
}

TEST_F(Destruction, OfAServiceLetsRunningCallsAnswer) {
    Client client;
    ASSERT_TRUE(WaitUntilAnswers(client));
    auto call = SlowCall(client);
    ASSERT_TRUE(WaitUntil([this] { return m_running == 1; }));
    bool ended = false;
    BlockingCall close([&] { ended = m_service->Server().Close(std::chrono::minutes(1)); });
    ASSERT_TRUE(close.WaitUntilBlocked());
    m_go.Set();
    ASSERT_TRUE(close.WaitUntilReturned());
    EXPECT_TRUE(ended);
    EXPECT_EQ(call.get(), STATUS_SUCCESS);
}

constexpr std::size_t kLittle = 1024 * 1024;

TEST_F(Destruction, TenThousandConnectsLeaveNothing) {
    const auto connect = [this] {
        RawSocket peer = RawSocket::Introduced(m_service->Path());
        ASSERT_TRUE(peer.Receive());
    };
    for (int i = 0; i < 1000; ++i) {  // until all pools have their size
        connect();
    }
    ASSERT_TRUE(WaitUntil([] {
        Client client;
        return Answers(client);
    }));
    const std::size_t descriptors = support::OpenFiles();
    const std::size_t threads = support::ThreadCount() + kPoolThreads;
    const std::size_t memory = support::UsedMemory();
    for (int i = 0; i < 10'000; ++i) {
        connect();
    }
    EXPECT_TRUE(WaitUntil([&] { return support::OpenFiles() <= descriptors; }))
        << support::OpenFiles() << " instead of " << descriptors;
    EXPECT_LE(support::ThreadCount(), threads);
    EXPECT_LT(support::UsedMemory(), memory + kLittle);
}

TEST_F(Destruction, AThousandClientsLeaveNothing) {
    const auto connect = [] {
        Client client;
        ASSERT_TRUE(WaitUntilAnswers(client));
    };
    for (int i = 0; i < 100; ++i) {
        connect();
    }
    const std::size_t descriptors = support::OpenFiles();
    const std::size_t threads = support::ThreadCount() + kPoolThreads;
    const std::size_t memory = support::UsedMemory();
    for (int i = 0; i < 1000; ++i) {
        connect();
    }
    EXPECT_TRUE(WaitUntil([&] { return support::OpenFiles() <= descriptors; }))
        << support::OpenFiles() << " instead of " << descriptors;
    EXPECT_TRUE(WaitUntil([&] { return support::ThreadCount() <= threads; }));
    EXPECT_LT(support::UsedMemory(), memory + kLittle);
}

}  // namespace
}  // namespace Korvex3Sync::tests
