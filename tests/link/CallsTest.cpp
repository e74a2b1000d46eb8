#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <future>
#include <thread>
#include <vector>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "link/RawSocket.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::BlockingCall;
using support::WaitUntil;

/// A service whose getVideoTriggerPeriod waits until the test lets it go. It answers its id.
class Calls : public ::testing::Test {
protected:
    Calls() { EXPECT_TRUE(WaitUntilAnswers(m_client)); }
    ~Calls() override { m_go.Set(); }

    RETSTATUS SlowCall(qint64 id, int& answer) {
        GetVideoTriggerPeriod::Out out{answer};
        const RETSTATUS status = m_client.Call<GetVideoTriggerPeriod>({id}, out);
        answer = std::get<0>(out);
        return status;
    }
    bool WaitUntilRunning(int calls) {
        return WaitUntil([this, calls] { return m_running == calls; });
    }

    Folders m_folders;
    os::Event m_go;
    std::atomic<int> m_running{0};
    std::atomic<int> m_served{0};
    std::atomic<int> m_gone{0};
    TestHub m_hub;
    TestService m_service{[this](Server& server) {
        server.On<GetVideoTriggerPeriod>(
            [this](ClientId, const GetVideoTriggerPeriod::In& in, GetVideoTriggerPeriod::Out& out) {
                ++m_running;
                ++m_served;
                m_go.Wait();
                --m_running;
                std::get<0>(out) = static_cast<int>(std::get<0>(in));
                return STATUS_SUCCESS;
            });
        server.OnClient({}, [this](ClientId) { ++m_gone; });
        server.On<GetConnectCameraCount>([](ClientId, const GetConnectCameraCount::In&,
                                            GetConnectCameraCount::Out&) -> RETSTATUS {
            throw std::runtime_error("a fault of the service");
        });
    }};
    Client m_client;
};

TEST_F(Calls, ThatWaitLongUseNoProcessor) {
    constexpr std::chrono::milliseconds kWait{400};
    const os::ScopedTimeScale scale(std::chrono::duration<double>(kWait) /
                                    GetVideoTriggerPeriod::kLimit);
    int answer = -1;
    const std::clock_t before = std::clock();
    EXPECT_EQ(SlowCall(5, answer), STATUS_FAILED);
    // Of the caller and of all threads of the link, at both ends.
    const std::chrono::duration<double> used(static_cast<double>(std::clock() - before) /
                                             CLOCKS_PER_SEC);
    EXPECT_LT(used, kWait / 2);
}

TEST_F(Calls, EndAtTheirLimitAndALateAnswerHarmsNobody) {
    int answer = -1;
    {
        const os::ScopedTimeScale fast(0.02);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(SlowCall(5, answer), STATUS_FAILED);
        EXPECT_GE(std::chrono::steady_clock::now() - start,
                  os::Scaled(GetVideoTriggerPeriod::kLimit));
    }
    EXPECT_EQ(answer, -1);
    ASSERT_TRUE(WaitUntilRunning(1));
    m_go.Set();
    ASSERT_TRUE(WaitUntilRunning(0));
    for (int id = 100; id < 200; ++id) {
        EXPECT_EQ(SlowCall(id, answer), STATUS_SUCCESS);
        EXPECT_EQ(answer, id);
    }
}

TEST_F(Calls, OfEightThreadsGetTheirOwnAnswers) {
    m_go.Set();
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([this, thread, &good] {
            for (int i = 0; i < 500; ++i) {
                int answer = -1;
                const int id = thread * 1000 + i;
                good += SlowCall(id, answer) == STATUS_SUCCESS && answer == id ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 8 * 500);
}

TEST_F(Calls, ThatAreSlowDelayNoOther) {
    std::vector<std::future<RETSTATUS>> slow;
    for (int i = 0; i < 12; ++i) {
        slow.push_back(std::async(std::launch::async, [this, i] {
            int answer = -1;
            const RETSTATUS status = SlowCall(i, answer);
            return answer == i ? status : STATUS_FAILED;
        }));
    }
    ASSERT_TRUE(WaitUntilRunning(12));
    EXPECT_TRUE(Answers(m_client));
    EXPECT_EQ(m_running, 12);
    m_go.Set();
    for (auto& call : slow) {
        EXPECT_EQ(call.get(), STATUS_SUCCESS);
    }
}

TEST_F(Calls, ThatWaitForAThreadOfTheServiceAreAnsweredLater) {
    std::vector<std::future<RETSTATUS>> slow;
    for (int i = 0; i < 40; ++i) {
        slow.push_back(std::async(std::launch::async, [this, i] {
            int answer = -1;
            const RETSTATUS status = SlowCall(i, answer);
            return answer == i ? status : STATUS_FAILED;
        }));
    }
    ASSERT_TRUE(WaitUntilRunning(16));
    m_go.Set();
    for (auto& call : slow) {
        EXPECT_EQ(call.get(), STATUS_SUCCESS);
    }
}

TEST_F(Calls, WhoseHandlerThrowsFail) {
    GetConnectCameraCount::Out out{-1};
    EXPECT_EQ(m_client.Call<GetConnectCameraCount>({1}, out), STATUS_FAILED);
    EXPECT_EQ(std::get<0>(out), -1);
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(Calls, WithoutAHandlerAreNotSupported) {
    Project::Out out;
    EXPECT_EQ(m_client.Call<Project>({1, PROJECT_OFF}, out), STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(Answers(m_client));
}

TEST_F(Calls, OnTheThreadOfTheLinkAreRefused) {
    const LogText log;
    os::Mutex mutex;
    Client* own = nullptr;
    std::atomic<int> ownStatus{-1};
    Client second(Client::Target::Service, {[&](const Signal&) {
                                                os::MutexGuard lock(mutex);
                                                GetCameraCount::Out out;
                                                ownStatus =
                                                    own->Call<GetCameraCount>({"KV00"}, out);
                                            },
                                            {}});
    {
        os::MutexGuard lock(mutex);
        own = &second;
    }
    ASSERT_TRUE(WaitUntilAnswers(second));
    for (ClientId id = 1; id < 10; ++id) {
        m_service.Server().Send(id, {});
    }
    ASSERT_TRUE(WaitUntil([&] { return ownStatus != -1; }));
    EXPECT_EQ(ownStatus, STATUS_FAILED);
    EXPECT_TRUE(log.Contains("must not be called on the thread of the link"));
    EXPECT_TRUE(Answers(second));
}

TEST_F(Calls, ThatHangDoNotHideThatTheirClientHasGone) {
    {
        const RawSocket peer = RawSocket::Introduced(m_service.Path());
        for (std::uint32_t number = 0; number < 30; ++number) {
            ByteWriter id;
            Write(id, GetVideoTriggerPeriod::In{1});
            peer.Send(
                Framed(Encoded(CallMessage{number, GetVideoTriggerPeriod::kNumber, id.Bytes()})));
        }
        ASSERT_TRUE(WaitUntilRunning(16));
        EXPECT_EQ(m_gone, 0);
    }
    EXPECT_TRUE(WaitUntil([this] { return m_gone == 1; }));
    EXPECT_EQ(m_running, 16);
    m_go.Set();
    EXPECT_TRUE(Answers(m_client));  // behind what the client had called
    EXPECT_EQ(m_served, 16);         // no call of a client that has gone begins
}

TEST_F(Calls, FailAtOnceWhenTheServiceCloses) {
    int answer = -1;
    RETSTATUS status = STATUS_SUCCESS;
    BlockingCall call([&] { status = SlowCall(1, answer); });
    ASSERT_TRUE(WaitUntilRunning(1));
    BlockingCall close([this] { m_service.Server().Close(std::chrono::milliseconds(1)); });
    ASSERT_TRUE(call.WaitUntilReturned());
    ASSERT_TRUE(close.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_FAILED);
    EXPECT_EQ(m_running, 1);  // the handler has not answered
}

/// A service below the link, which does what the test says.
class BrokenService : public ::testing::Test {
protected:
    BrokenService() : m_path(SocketOf(kServiceSocket)), m_socket(RawSocket::Listening(m_path)) {}

    /// Waits for the client's call, after the introduction.
    CallMessage CallOf(RawSocket& peer) {
        while (const auto message = peer.Receive()) {
            if (const auto* const call = std::get_if<CallMessage>(&*message)) {
                return *call;
            }
        }
        ADD_FAILURE() << "no call";
        return {};
    }
    RawSocket AcceptIntroduced() const {
        RawSocket peer = m_socket->Accept();
        peer.Send(Framed(Encoded(Hello{kProtocolVersion, Role::Service, 1})));
        return peer;
    }

    Folders m_folders;
    const std::string m_path;
    std::optional<RawSocket> m_socket;
    TestHub m_hub;
};

TEST_F(BrokenService, ThatEndsInACallFailsItAtOnce) {
    const HubLink registered(RegistrationAt(m_path), [] {});
    Client client;
    RETSTATUS status = STATUS_SUCCESS;
    GetCamerasInformation::Out out;
    // Waits for the connection; its limit has not passed when it returns.
    BlockingCall call([&] { status = client.Call<GetCamerasInformation>({"KV00"}, out); });
    const auto start = std::chrono::steady_clock::now();
    {
        RawSocket peer = AcceptIntroduced();
        EXPECT_EQ(CallOf(peer).operation, GetCamerasInformation::kNumber);
    }
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_LT(std::chrono::steady_clock::now() - start, GetCamerasInformation::kLimit);
    EXPECT_EQ(status, STATUS_FAILED);
}

TEST_F(BrokenService, ThatAnswersNonsenseFailsTheCallAndLosesTheConnection) {
    const HubLink registered(RegistrationAt(m_path), [] {});
    Client client;
    const LogText log;
    RETSTATUS status = STATUS_SUCCESS;
    GetCamerasInformation::Out out{{}, {}, {}, {}, -1};
    BlockingCall call([&] { status = client.Call<GetCamerasInformation>({"KV00"}, out); });
    RawSocket peer = AcceptIntroduced();
    const CallMessage received = CallOf(peer);
    peer.Send(Framed(Encoded(ReplyMessage{received.number, STATUS_SUCCESS, "nonsense"})));
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_FAILED);
    EXPECT_EQ(std::get<4>(out), -1);
    EXPECT_TRUE(peer.WaitUntilClosed());
    EXPECT_TRUE(log.Contains("a malformed answer to getCamerasInformation"));
}

TEST_F(BrokenService, MayAnswerWhatNobodyAsked) {
    const HubLink registered(RegistrationAt(m_path), [] {});
    Client client;
    RETSTATUS status = STATUS_FAILED;
    GetCamerasInformation::Out out;
    BlockingCall call([&] { status = client.Call<GetCamerasInformation>({"KV00"}, out); });
    RawSocket peer = AcceptIntroduced();
    const CallMessage received = CallOf(peer);
    ByteWriter results;
    Write(results, GetCamerasInformation::Out{{}, {}, {}, {}, 3});
    for (const std::uint32_t number : {received.number + 1, received.number, received.number}) {
        peer.Send(Framed(Encoded(ReplyMessage{number, STATUS_SUCCESS, results.Bytes()})));
    }
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_SUCCESS);
    EXPECT_EQ(std::get<4>(out), 3);
}

TEST_F(BrokenService, ThatHangsCostsACallItsShortWaitAndIsLeftForAnother) {
    auto hung = std::make_unique<HubLink>(RegistrationAt(m_path), [] {});
    const LogText log;
    Client client;
    const RawSocket peer = m_socket->Accept();  // and never a word
    EXPECT_FALSE(Answers(client));
    ASSERT_TRUE(WaitUntil([&] { return log.Contains("no first message within the limit"); }));
    hung.reset();
    m_socket.reset();
    const TestService service;
    EXPECT_TRUE(WaitUntilAnswers(client));
}

}  // namespace
}  // namespace Korvex3Sync::tests
