#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "link/RawSocket.h"
#include "platform/os/Clock.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::BlockingCall;
using support::WaitUntil;

class Reconnect : public ::testing::Test {
protected:
    Folders m_folders;
    std::optional<TestHub> m_hub;
    std::optional<TestService> m_service;
};

/// Steps: h and s end hub and service, H and S start them.
class RestartOrder : public Reconnect, public ::testing::WithParamInterface<const char*> {};

TEST_P(RestartOrder, HealsByItself) {
    m_hub.emplace();
    m_service.emplace();
    Client client;
    ASSERT_TRUE(WaitUntilAnswers(client));
    for (int round = 0; round < 3; ++round) {
        for (const char step : std::string(GetParam())) {
            switch (step) {
                case 'h':
                    m_hub.reset();
                    break;
                case 'H':
                    m_hub.emplace();
                    break;
                case 's':
                    m_service.reset();
                    EXPECT_FALSE(Answers(client));
                    break;
                default:
                    m_service.emplace();
            }
        }
        ASSERT_TRUE(WaitUntilAnswers(client)) << round;
        ASSERT_TRUE(WaitUntil([&] {
            GetHubState::Out out;
            Client asking(Client::Target::Hub);
            return asking.Call<GetHubState>({}, out) == STATUS_SUCCESS &&
                   std::get<0>(out).services.size() == 1;
        }));
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, RestartOrder,
                         ::testing::Values("sS", "hH", "hHsS", "hsHS", "hsSH", "shHS", "shSH",
                                           "sShH"),
                         [](const auto& order) {
                             std::string name;
                             for (const char step : std::string(order.param)) {
                                 name += step == 'h'   ? "HubEnds"
                                         : step == 'H' ? "HubStarts"
                                         : step == 's' ? "ServiceEnds"
                                                       : "ServiceStarts";
                             }
                             return name;
                         });

TEST_F(Reconnect, LeavesACallWithoutAHubToFail) {
    Client client;
    EXPECT_FALSE(Answers(client));
    m_hub.emplace();
    EXPECT_FALSE(Answers(client));
    m_service.emplace();
    EXPECT_TRUE(WaitUntilAnswers(client));
}

TEST_F(Reconnect, KeepsTheConnectionWhenOnlyTheHubEnds) {
    m_hub.emplace();
    m_service.emplace();
    std::atomic<int> losses{0};
    Client client(Client::Target::Service,
                  {{}, [&losses](bool connected) { losses += connected ? 0 : 1; }});
    ASSERT_TRUE(WaitUntilAnswers(client));
    m_hub.reset();
    EXPECT_TRUE(Answers(client));
    EXPECT_EQ(losses, 0);
}

void AnswerWithFive(Server& server) {
    server.On<GetCamerasInformation>(
        [](ClientId, const GetCamerasInformation::In&, GetCamerasInformation::Out& out) {
            std::get<4>(out) = 5;
            return STATUS_SUCCESS;
        });
}

TEST_F(Reconnect, LetsGetCamerasInformationWaitForTheService) {
    Client client;
    GetCamerasInformation::Out out;
    RETSTATUS status = STATUS_FAILED;
    BlockingCall call([&] { status = client.Call<GetCamerasInformation>({"KV00"}, out); });
    ASSERT_TRUE(call.WaitUntilBlocked());
    m_hub.emplace();
    m_service.emplace(AnswerWithFive);
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_SUCCESS);
    EXPECT_EQ(std::get<4>(out), 5);
}

TEST_F(Reconnect, LetsGetCamerasInformationWaitUntilItsLimit) {
    const os::ScopedTimeScale fast(0.02);
    Client client;
    GetCamerasInformation::Out out;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.Call<GetCamerasInformation>({"KV00"}, out), STATUS_FAILED);
    EXPECT_GE(std::chrono::steady_clock::now() - start, os::Scaled(GetCamerasInformation::kLimit));
}

TEST_F(Reconnect, LogsARepeatedFailureOnce) {
    const LogText log;
    const RawSocket hub = RawSocket::Listening(SocketOf(kHubSocket));
    const Client client;
    for (int attempt = 0; attempt < 6; ++attempt) {
        hub.Accept();  // and closes
    }
    EXPECT_EQ(log.Count("Cannot connect to the device service"), 1);
}

TEST_F(Reconnect, TellsTheSinkOfEachChange) {
    m_hub.emplace();
    m_service.emplace();
    std::atomic<int> came{0};
    std::atomic<int> lost{0};
    Client client(Client::Target::Service,
                  {{}, [&](bool connected) { ++(connected ? came : lost); }});
    ASSERT_TRUE(WaitUntil([&] { return came == 1; }));
    m_service.reset();
    ASSERT_TRUE(WaitUntil([&] { return lost == 1; }));
    m_service.emplace();
    ASSERT_TRUE(WaitUntil([&] { return came == 2; }));
    EXPECT_EQ(lost, 1);
}

TEST_F(Reconnect, ReturnsToTheNewestServiceOfTheName) {
    m_hub.emplace();
    m_service.emplace();
    const auto answers = [](int count) {
        return WaitUntil([count] {
            Client client;
            GetCameraCount::Out out;
            return client.Call<GetCameraCount>({"KV00"}, out) == STATUS_SUCCESS &&
                   std::get<0>(out) == count;
        });
    };
    ASSERT_TRUE(answers(4));  // the first one is registered
    const std::string path = SocketOf("second");
    Server second(path, Role::Service);
    second.On<GetCameraCount>([](ClientId, const GetCameraCount::In&, GetCameraCount::Out& out) {
        std::get<0>(out) = 2;
        return STATUS_SUCCESS;
    });
    std::string reason;
    ASSERT_TRUE(second.Listen(reason)) << reason;
    auto registered = std::make_optional<HubLink>(RegistrationAt(path), [] {});
    ASSERT_TRUE(answers(2));
    registered.reset();
    ASSERT_TRUE(answers(4));
}

}  // namespace
}  // namespace Korvex3Sync::tests
