#include <Korvex3Sync/Korvex3Sync.h>
#include <gmock/gmock.h>

#include <array>
#include <memory>

#include "device_service/EveryOperation.h"
#include "device_service/ServiceSession.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using testing::StartsWith;

/// What the board and the cameras were told, without what happens by itself.
std::vector<std::string> Commands(virtual_head::VirtualHead& head) {
    std::vector<std::string> commands;
    for (const std::string& text : head.GetJournal().Texts()) {
        const bool byItself = text.starts_with("zr3DQueryCurrentStatus") ||
                              text.starts_with("SnapShot") || text.starts_with("GetResolution") ||
                              text.starts_with("GetColorMode");
        if (!byItself) {
            commands.push_back(text);
        }
    }
    return commands;
}

/// The results of all operations, and the commands that each has caused.
struct Course {
    std::vector<std::string> results;
    std::vector<std::vector<std::string>> commands;
};

template <class Run>
Course CourseOf(virtual_head::VirtualHead& head, Run run) {
    Course course;
    for (const Operation& operation : EveryOperation()) {
        head.GetJournal().Clear();
        course.results.push_back(run(operation));
        course.commands.push_back(Commands(head));
    }
    return course;
}

class OperationTest : public ServiceSession {};

TEST_F(OperationTest, EachGivesWhatDirectModeGives) {
    Course direct;
    {
        Request();
        const DirectDevice device;
        direct = CourseOf(TheHead(), [&](const Operation& o) { return o.direct(device.Handle()); });
    }
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    const Course service = CourseOf(
        TheHead(), [&](const Operation& o) { return o.throughService(*client, client.Id()); });
    for (std::size_t i = 0; i < EveryOperation().size(); ++i) {
        const std::string operation =
            std::string(EveryOperation()[i].name) + ", number " + std::to_string(i);
        EXPECT_EQ(service.results[i], direct.results[i]) << operation;
        EXPECT_EQ(service.commands[i], direct.commands[i]) << operation;
    }
}

TEST_F(OperationTest, AnIdThatIsNotTheDeviceGivesNotConnected) {
    Request();
    ServiceClient client;
    const auto expectNotConnected = [&](SyncInterface& service, qint64 id, const char* when) {
        TheHead().GetJournal().Clear();
        for (const Operation& operation : EveryOperation()) {
            // The firmware of a board can be asked for without a device.
            if (id == 0 && std::string(operation.name) == "getFirewareVersion") {
                continue;
            }
            EXPECT_THAT(operation.throughService(service, id), StartsWith("6"))
                << operation.name << ", " << when;
        }
        EXPECT_EQ(service.disConnectDevice(id), STATUS_NOT_CONNECTED) << when;
        EXPECT_EQ(Commands(TheHead()), std::vector<std::string>{}) << when;
    };
    expectNotConnected(*client, 0, "before a connect");
    expectNotConnected(*client, 12345, "before a connect");
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    const qint64 first = client.Id();
    expectNotConnected(*client, first + 1, "an id that does not exist yet");
    expectNotConnected(*client, -first, "an id that never exists");
    {
        ServiceClient other;
        expectNotConnected(*other, first, "the id of another client");
    }
    ASSERT_EQ(client->disConnectDevice(first), STATUS_SUCCESS);
    expectNotConnected(*client, first, "after the disconnect");
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    const qint64 second = client.Id();
    EXPECT_NE(second, first);
    expectNotConnected(*client, first, "after another connect");
    client.Vanish();
    ASSERT_TRUE(WaitUntilFree());
    ServiceClient next;
    expectNotConnected(*next, second, "after the owner has gone");
    ASSERT_EQ(next.Connect(), STATUS_SUCCESS);
    expectNotConnected(*next, second, "after another client has connected");
}

TEST_F(OperationTest, IdsOfAnEarlierServiceAreUnknown) {
    Request();
    qint64 before = 0;
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        before = client.Id();
    }
    StopService();
    StartService();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    EXPECT_NE(client.Id(), before);
    int brightness = 0;
    EXPECT_EQ(client->getProjectorBrightness(before, brightness), STATUS_NOT_CONNECTED);
}

TEST_F(OperationTest, DiscoveryGivesWhatDirectModeGives) {
    virtual_head::HeadDescription description = Head();
    description.color = false;
    for (const bool present : {true, false}) {
        if (present) {
            Request(description);
        }
        ServiceClient client;
        for (const char* type : {"KV00", "KV", "KV00A1001", "KV99", "GC", "XX", "", "\xC3\xA4"}) {
            std::vector<char*> serials;
            std::vector<int> directWidths;
            std::vector<int> directHeights;
            std::vector<bool> directColors;
            int directCount = -1;
            const RETSTATUS direct = GetCamerasInformation(
                type, serials, directWidths, directHeights, directColors, directCount);
            QStringList expected;
            for (char* serial : serials) {
                const std::unique_ptr<char[]> owned(serial);
                expected.append(serial);
            }
            QStringList names;
            std::vector<int> widths;
            std::vector<int> heights;
            std::vector<bool> colors;
            int count = -1;
            EXPECT_EQ(client->getCamerasInformation(type, names, widths, heights, colors, count),
                      direct);
            EXPECT_EQ(names, expected) << type;
            EXPECT_EQ(widths, directWidths) << type;
            EXPECT_EQ(heights, directHeights) << type;
            EXPECT_EQ(colors, directColors) << type;
            EXPECT_EQ(count, directCount) << type;
            int directTotal = -1;
            int total = -1;
            EXPECT_EQ(client->getCameraCount(type, total), GetCameraCount(type, directTotal));
            EXPECT_EQ(total, directTotal) << type;
        }
    }
}

TEST_F(OperationTest, AFailedFirmwareQueryEndsTheConnectionAsInDirectMode) {
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    ASSERT_TRUE(TheHead().GetFaults().Fail("zr3DQueryProjectorFirewareVersion", 1));
    QString version("unset");
    EXPECT_EQ(client->getFirewareVersion(client.Id(), "KV00", "", version), STATUS_FAILED);
    EXPECT_EQ(version, "unset");
    int brightness = 0;
    EXPECT_EQ(client->getProjectorBrightness(client.Id(), brightness), STATUS_NOT_CONNECTED);
    EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_NOT_CONNECTED);
    ASSERT_TRUE(WaitUntilFree());
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    EXPECT_EQ(client->getFirewareVersion(client.Id(), "KV00", "", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.4.0");
}

TEST_F(OperationTest, TheFirmwareIsKnownWithoutAConnectionUnlessAnotherClientHasTheDevice) {
    Request();
    ServiceClient client;
    QString version;
    EXPECT_EQ(client->getFirewareVersion(0, "KV00", "", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.4.0");
    EXPECT_EQ(client->getFirewareVersion(0, "KV00", "VH3267-9999", version), STATUS_PROJECTOR);
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    ASSERT_EQ(client->project(client.Id(), PROJECT_PATTERN_1), STATUS_SUCCESS);
    ServiceClient other;
    TheHead().GetJournal().Clear();
    EXPECT_EQ(other->getFirewareVersion(0, "KV00", "", version), STATUS_FAILED);
    EXPECT_EQ(Commands(TheHead()), std::vector<std::string>{});
}

TEST_F(OperationTest, ALostBoardGivesWhatDirectModeGives) {
    Request();
    ServiceClient client;
    ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = virtual_head::FaultKind::BoardVanish}));
    int brightness = -1;
    EXPECT_EQ(client->getProjectorBrightness(client.Id(), brightness), STATUS_FAILED);
    EXPECT_EQ(brightness, -1);
    EXPECT_EQ(client->reconnectDevice(client.Id()), STATUS_FAILED);
    // The board did not open.
    EXPECT_EQ(client->setProjectorBrightness(client.Id(), 30), STATUS_NOT_CONNECTED);
    ASSERT_TRUE(TheHead().GetFaults().Order({.kind = virtual_head::FaultKind::BoardReturn}));
    EXPECT_EQ(client->reconnectDevice(client.Id()), STATUS_SUCCESS);
    EXPECT_EQ(client->setProjectorBrightness(client.Id(), 30), STATUS_SUCCESS);
    EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
}

}  // namespace
}  // namespace Korvex3Sync::tests
