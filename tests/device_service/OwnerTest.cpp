#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "device_service/ServiceSession.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/Deadline.h"
#include "support/ThreadState.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using support::BlockingCall;
using testing::ElementsAre;
using testing::HasSubstr;
using virtual_head::FaultKind;

class OwnerTest : public ServiceSession {
protected:
    /// A new client can connect the device and use it.
    static void ExpectUsable() {
        ServiceClient next;
        ASSERT_TRUE(support::WaitUntil([&] { return next.Connect() == STATUS_SUCCESS; }));
        int brightness = 0;
        EXPECT_EQ(next->getProjectorBrightness(next.Id(), brightness), STATUS_SUCCESS);
        EXPECT_EQ(next->disConnectDevice(next.Id()), STATUS_SUCCESS);
    }
    /// The journal folds equal calls.
    std::uint64_t Calls(const std::string& call) {
        std::uint64_t count = 0;
        for (const auto& entry : TheHead().GetJournal().Entries()) {
            count += entry.call == call ? entry.count : 0;
        }
        return count;
    }
};

TEST_F(OwnerTest, ASecondClientIsRefusedAndTheLogNamesTheOwner) {
    Request();
    ServiceClient owner;
    ASSERT_EQ(owner.Connect(), STATUS_SUCCESS);
    ServiceClient other;
    const LoggedText logged("may not connect");
    qint64 id = -5;
    EXPECT_EQ(other->connectDevice("KV00", id), STATUS_FAILED);
    EXPECT_EQ(id, -5);
    EXPECT_THAT(logged.Records(),
                ElementsAre(HasSubstr("client " + std::to_string(::getpid()) + " has the device")));
    int brightness = 0;
    EXPECT_EQ(owner->getProjectorBrightness(owner.Id(), brightness), STATUS_SUCCESS);
    ASSERT_EQ(owner->disConnectDevice(owner.Id()), STATUS_SUCCESS);
    EXPECT_EQ(other.Connect(), STATUS_SUCCESS);
}

TEST_F(OwnerTest, ARefusalWaitsForTheEndOfTheOwner) {
    Request();
    ServiceClient owner;
    ServiceClient other;
    ASSERT_EQ(owner.Connect(), STATUS_SUCCESS);
    const os::ScopedTimeScale slow(10);  // of the wait
    BlockingCall connect([&] { EXPECT_EQ(other.Connect(), STATUS_SUCCESS); });
    ASSERT_TRUE(connect.WaitUntilBlocked());
    owner.Vanish();
    EXPECT_TRUE(connect.WaitUntilReturned());
}

TEST_F(OwnerTest, ASecondConnectOfTheOwnerOpensANewConnection) {
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    const qint64 first = client.Id();
    ASSERT_EQ(client->setScanCallBackFunction(first, true), STATUS_SUCCESS);
    TheHead().GetJournal().Clear();
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    EXPECT_EQ(Calls("zr3DExitHidDev"), 1U);
    EXPECT_EQ(Calls("zr3DInitHidDev"), 1U);
    int brightness = 0;
    EXPECT_EQ(client->getProjectorBrightness(first, brightness), STATUS_NOT_CONNECTED);
    EXPECT_EQ(client->getProjectorBrightness(client.Id(), brightness), STATUS_SUCCESS);
    EXPECT_EQ(SharedFiles().size(), 2U);
}

TEST_F(OwnerTest, ConnectsOfOneClientAtTheSameTimeLeaveOneConnection) {
    Request();
    ServiceClient client;
    std::atomic<int> connected{0};
    {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                qint64 id = 0;
                connected += client->connectDevice("KV00", id) == STATUS_SUCCESS ? 1 : 0;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_GE(connected, 1);  // on a slow machine some wait too long for the others
    client.Vanish();
    ASSERT_TRUE(WaitUntilFree());
    EXPECT_EQ(Calls("zr3DInitHidDev"), Calls("zr3DExitHidDev"));
}

TEST_F(OwnerTest, AClientThatVanishesReleasesTheDevice) {
    Request();
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    }
    EXPECT_TRUE(WaitUntilFree());
    EXPECT_EQ(Calls("zr3DExitHidDev"), 1U);
    ExpectUsable();
}

TEST_F(OwnerTest, AClientThatVanishesInAScanReleasesTheDevice) {
    Request();
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        ASSERT_EQ(client->setStatusCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        ASSERT_EQ(client->setVideoTriggerPeriod(client.Id(), 5), STATUS_SUCCESS);
        ASSERT_EQ(client->enableVideoTrigger(client.Id(), TRIGGER_PATTERN, true), STATUS_SUCCESS);
        ASSERT_TRUE(client.WaitForNotices(3));
    }
    EXPECT_TRUE(WaitUntilFree());
    ExpectUsable();
}

TEST_F(OwnerTest, AClientThatVanishesWhileItConnectsReleasesTheDevice) {
    Request();
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = FaultKind::Slow,
                                             .call = "zr3DInitHidDev",
                                             .extra = std::chrono::milliseconds(300)}));
    {
        ServiceClient client;
        BlockingCall connect([&] { EXPECT_EQ(client.Connect(), STATUS_FAILED); });
        ASSERT_TRUE(
            support::WaitUntil([&] { return TheHead().GetFaults().Holds("zr3DInitHidDev"); }));
        client.Vanish();
        EXPECT_TRUE(connect.WaitUntilReturned());
    }
    ASSERT_TRUE(support::WaitUntil([&] { return Calls("zr3DInitHidDev") == 1; }));
    EXPECT_TRUE(WaitUntilFree());
    EXPECT_EQ(Calls("zr3DExitHidDev"), 1U);
    ExpectUsable();
}

TEST_F(OwnerTest, AClientThatVanishesInASnapshotReleasesTheDeviceAtOnce) {
    Request();
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = FaultKind::LoseColor, .times = 1}));
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        BlockingCall snap([&] {
            std::vector<unsigned char*> images;
            int width = 0;
            int height = 0;
            double exposure = 5;
            int gain = 1;
            EXPECT_EQ(client->snapColorImage(client.Id(), images, width, height, 0, exposure, gain,
                                             CONTROL_ROUTE_1),
                      STATUS_FAILED);
        });
        // The snapshot waits for the frame that is lost.
        ASSERT_TRUE(support::WaitUntil([&] { return TheHead().Counts().color.lost == 1; }));
        client.Vanish();
        EXPECT_TRUE(snap.WaitUntilReturned());
    }
    EXPECT_TRUE(WaitUntilFree());  // a snapshot would wait for 100 s
    ExpectUsable();
}

TEST_F(OwnerTest, AClientThatVanishesInAReconnectionReleasesTheDevice) {
    Request();
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        // The board opens and does not answer, so it is restarted and opened again after 7 s.
        ASSERT_TRUE(TheHead().GetFaults().Order({.kind = FaultKind::BoardMute, .opens = 1}));
        BlockingCall reconnect(
            [&] { EXPECT_EQ(client->reconnectDevice(client.Id()), STATUS_FAILED); });
        ASSERT_TRUE(support::WaitUntil([&] { return Calls("zr3DInitHidDev") >= 2; }));
        client.Vanish();
        EXPECT_TRUE(reconnect.WaitUntilReturned());
    }
    EXPECT_TRUE(WaitUntilFree());
    TheHead().GetFaults().Clear();
    ExpectUsable();
}

TEST_F(OwnerTest, WhileADeviceIsBeingClosedTheNextClientWaits) {
    Request();
    ServiceClient next;
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        ASSERT_TRUE(TheHead().GetFaults().Order({.kind = FaultKind::Slow,
                                                 .call = "zr3DExitHidDev",
                                                 .extra = std::chrono::milliseconds(500)}));
    }
    ASSERT_TRUE(support::WaitUntil([&] { return TheHead().GetFaults().Holds("zr3DExitHidDev"); }));
    EXPECT_EQ(next.Connect(), STATUS_SUCCESS);
}

TEST_F(OwnerTest, AClosingThatTakesTooLongRefusesTheNextClient) {
    Request();
    ServiceClient next;
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        // A grab thread that does not come back from its snap.
        ASSERT_TRUE(TheHead().GetFaults().Hang("SnapShot"));
        ASSERT_TRUE(TheHead().GetFaults().WaitForHang("SnapShot", kDeadline));
    }
    const LoggedText logged("is still being closed");
    qint64 id = 0;
    // Either the end of the owner is not known yet, or its device is being closed.
    ASSERT_TRUE(support::WaitUntil([&] {
        EXPECT_EQ(next->connectDevice("KV00", id), STATUS_FAILED);
        return !logged.Records().empty();
    }));
    int count = 0;
    EXPECT_EQ(next->getCameraCount("KV00", count), STATUS_SUCCESS) << "others are served";
    TheHead().GetFaults().ReleaseHangs();
    EXPECT_TRUE(support::WaitUntil([&] { return next.Connect() == STATUS_SUCCESS; }));
}

TEST_F(OwnerTest, TheEndOfTheServiceClosesTheDeviceAndEndsCalls) {
    Request();
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = FaultKind::LoseColor, .times = 1}));
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    BlockingCall snap([&] {
        std::vector<unsigned char*> images;
        int width = 0;
        int height = 0;
        double exposure = 5;
        int gain = 1;
        EXPECT_EQ(client->snapColorImage(client.Id(), images, width, height, 0, exposure, gain,
                                         CONTROL_ROUTE_1),
                  STATUS_FAILED);
    });
    ASSERT_TRUE(support::WaitUntil([&] { return TheHead().Counts().color.lost == 1; }));
    EXPECT_TRUE(Service().Stop(std::chrono::minutes(1)));
    EXPECT_TRUE(snap.WaitUntilReturned());
    EXPECT_EQ(Calls("zr3DExitHidDev"), 1U);
    EXPECT_TRUE(SharedFiles().empty());
    qint64 id = 0;
    EXPECT_EQ(client->connectDevice("KV00", id), STATUS_FAILED);
}

TEST_F(OwnerTest, ADeviceThatHangsDoesNotHoldUpTheEnd) {
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    ASSERT_TRUE(TheHead().GetFaults().Hang("SnapShot"));
    ASSERT_TRUE(TheHead().GetFaults().WaitForHang("SnapShot", kDeadline));
    EXPECT_FALSE(Service().Stop(std::chrono::milliseconds(200)));
    TheHead().GetFaults().ReleaseHangs();
}

TEST_F(OwnerTest, AskingForTheEndIsAnswered) {
    ServiceClient client;
    link::Client asker;
    link::StopService::Out nothing;
    ASSERT_TRUE(support::WaitUntil(
        [&] { return asker.Call<link::StopService>({}, nothing) == STATUS_SUCCESS; }));
    EXPECT_EQ(StopRequests(), 1);
}

TEST_F(OwnerTest, AThousandConnectsLeaveNothingBehind) {
    const os::ScopedTimeScale fast(0.1);  // of the end of a snap
    virtual_head::HeadDescription description = Head();
    description.scene.poses = 1;
    Request(description);
    StopService();
    const std::size_t filesBefore = support::OpenFiles();
    const std::size_t threadsBefore = support::ThreadCount();
    StartService();
    for (int i = 0; i < 1000; ++i) {
        ServiceClient client;
        if (i % 10 == 0) {
            // The end of the client before may not be known yet.
            ASSERT_TRUE(support::WaitUntil([&] { return client.Connect() == STATUS_SUCCESS; }));
        }
        if (i % 20 == 0) {
            EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
        }
    }
    ASSERT_TRUE(WaitUntilFree());
    StopService();
    EXPECT_EQ(Calls("zr3DInitHidDev"), 100U);
    EXPECT_EQ(Calls("zr3DExitHidDev"), 100U);
    // The hub keeps up to 16 threads for its calls.
    EXPECT_TRUE(support::WaitUntil([&] { return support::ThreadCount() <= threadsBefore + 16; }))
        << support::ThreadCount() << " after " << threadsBefore;
    EXPECT_TRUE(support::WaitUntil([&] { return support::OpenFiles() <= filesBefore; }))
        << support::OpenFiles() << " after " << filesBefore;
}

}  // namespace
}  // namespace Korvex3Sync::tests
