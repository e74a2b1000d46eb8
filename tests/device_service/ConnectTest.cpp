#include <sys/resource.h>

#include <gmock/gmock.h>

#include "device_service/ServiceSession.h"
#include "platform/os/InterruptWatch.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ConnectTest : public ServiceSession {
protected:
    /// A connect fails with this status and leaves nothing behind; the log tells the reason.
    static void ExpectRefused(RETSTATUS status, const QString& type, const std::string& reason) {
        ServiceClient client;
        const LoggedText logged("cannot connect the device");
        qint64 id = -5;
        EXPECT_EQ(client->connectDevice(type, id), status);
        EXPECT_EQ(id, -5);
        EXPECT_THAT(logged.Records(), ElementsAre(HasSubstr(reason)));
        EXPECT_TRUE(SharedFiles().empty());
        const auto state = State();
        ASSERT_TRUE(state.has_value());
        EXPECT_EQ(state->deviceId, 0);
    }
};

TEST_F(ConnectTest, WithoutCamerasIsRefused) {
    ExpectRefused(STATUS_CAMERA, "KV00", "no camera of type KV00");
}

TEST_F(ConnectTest, OfAnotherTypeIsRefused) {
    Request();
    ExpectRefused(STATUS_CAMERA, "KV99", "no camera of type KV99");
    ExpectRefused(STATUS_CAMERA, "XX", "no camera of type XX");
}

TEST_F(ConnectTest, OfAHeadWithImagesOfAnotherSizeIsRefused) {
    for (const auto& [width, height] :
         {std::pair(640, 512), std::pair(1280, 512), std::pair(640, 1024)}) {
        virtual_head::HeadDescription description = Head();
        description.width = width;
        description.height = height;
        Request(description);
        ExpectRefused(STATUS_NOT_SUPPORTED, "KV00",
                      "camera KV00A1001 has images of " + std::to_string(width) + " x " +
                          std::to_string(height) + "; service mode supports 1280 x 1024 only");
        EXPECT_TRUE(TheHead().GetJournal().Texts({"zr3DInitHidDev"}).empty());
    }
}

TEST_F(ConnectTest, GivesTheStatusOfDirectMode) {
    Request();
    ASSERT_TRUE(TheHead().GetFaults().Fail("zr3DInitHidDev", 1));
    ExpectRefused(STATUS_PROJECTOR, "KV00", "status 1");
    ServiceClient client;
    EXPECT_EQ(client.Connect(), STATUS_SUCCESS);
}

/// Files of this process cannot grow beyond a size while it exists. Shared memory counts as files.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        os::TurnWriteSignalsIntoErrors();
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_before), 0);
        struct rlimit limit = m_before;
        limit.rlim_cur = bytes;
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    struct rlimit m_before {};
};

TEST_F(ConnectTest, WithoutRoomInSharedMemoryIsRefused) {
    Request();
    {
        // Room for snapshots, but not for sets.
        const FileSizeLimit limit(10'000'000);
        ExpectRefused(STATUS_FAILED, "KV00", "cannot make a shared-memory area");
    }
    {
        const FileSizeLimit limit(1'000'000);
        ExpectRefused(STATUS_FAILED, "KV00", "cannot make a shared-memory area");
    }
    EXPECT_TRUE(TheHead().GetJournal().Texts({"zr3DInitHidDev"}).empty());
    ServiceClient client;
    EXPECT_EQ(client.Connect(), STATUS_SUCCESS);
}

}  // namespace
}  // namespace Korvex3Sync::tests
