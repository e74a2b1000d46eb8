#include <gtest/gtest.h>

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "link/LinkSession.h"
#include "link/LogText.h"
#include "platform/include/SyncInterface.h"
#include "platform/link/channel/IoLoop.h"
#include "support/BlockingCall.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;
using support::WaitUntil;

std::unique_ptr<QCoreApplication> NewApplication() {
    static int count = 1;
    static char name[] = "without_application";
    static char* arguments[] = {name, nullptr};
    return std::make_unique<QCoreApplication>(count, arguments);
}

class WithoutApplication : public ::testing::Test {
protected:
    Folders m_folders;
    LogText m_log;
};

TEST_F(WithoutApplication, CallsFailAtOnceAndTheLogSaysWhy) {
    SyncInterface sync;
    int count = -1;
    QStringList names;
    std::vector<int> sizes;
    std::vector<bool> colors;
    EXPECT_EQ(sync.getCameraCount("KV00", count), STATUS_FAILED);
    EXPECT_EQ(sync.getCamerasInformation("KV00", names, sizes, sizes, colors, count),
              STATUS_FAILED);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(m_log.Count("this process has no QCoreApplication"), 1);
}

TEST_F(WithoutApplication, AServerSaysWhyItDoesNotListen) {
    Server server(SocketOf("x"), Role::Service);
    std::string reason;
    EXPECT_FALSE(server.Listen(reason));
    EXPECT_EQ(reason, "this process has no QCoreApplication");
}

TEST_F(WithoutApplication, AClientConnectsWhenThereIsOne) {
    Client client;
    EXPECT_FALSE(Answers(client));
    const auto application = NewApplication();
    const TestHub hub;
    const TestService service;
    EXPECT_TRUE(WaitUntilAnswers(client));
}

TEST_F(WithoutApplication, TheEndOfItWaitsForTheThread) {
    auto application = NewApplication();
    std::atomic<bool> stopped{false};
    IoLoop loop;
    std::string reason;
    ASSERT_TRUE(loop.Start({[] {}, [] {},
                            [&stopped] {
                                const auto end = std::chrono::steady_clock::now() +
                                                 std::chrono::milliseconds(20);
                                while (std::chrono::steady_clock::now() < end) {
                                    std::this_thread::yield();
                                }
                                stopped = true;
                            }},
                           reason))
        << reason;
    application.reset();
    EXPECT_TRUE(stopped) << "the process may end now";
}

TEST_F(WithoutApplication, AClientEndsItsConnectionWithItAndComesBackWithTheNext) {
    auto application = NewApplication();
    Client client;
    for (int round = 0; round < 10; ++round) {
        const TestHub hub;
        const TestService service;
        ASSERT_TRUE(WaitUntilAnswers(client)) << round;
        application.reset();
        EXPECT_FALSE(Answers(client));
        application = NewApplication();
    }
    application.reset();
    EXPECT_FALSE(Answers(client));
}

TEST_F(WithoutApplication, ACallEndsWithIt) {
    auto application = NewApplication();
    Client client;
    RETSTATUS status = STATUS_SUCCESS;
    support::BlockingCall call([&] {
        GetCamerasInformation::Out out;
        status = client.Call<GetCamerasInformation>({"KV00"}, out);
    });
    ASSERT_TRUE(call.WaitUntilBlocked());
    application.reset();
    ASSERT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(status, STATUS_FAILED);
}

}  // namespace
}  // namespace Korvex3Sync::tests
