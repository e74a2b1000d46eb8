#include <algorithm>
#include <atomic>
#include <thread>

#include "cameras/AllCalls.h"
#include "cameras/HeadFixture.h"

namespace Korvex3Sync::tests {
namespace {

class CameraHandleTest : public HeadFixture {
protected:
    static void ExpectThatEverythingFails(void* handle) {
        for (const auto& call : CallsOnAHandle()) {
            EXPECT_FALSE(call.succeeds(handle)) << call.name;
        }
        unsigned char byte = 0;
        unsigned char* image = &byte;
        EXPECT_NE(zr3DCamera::SnapShot(handle, image), 0);
        EXPECT_EQ(image, nullptr);
        void* released = handle;
        EXPECT_NE(zr3DCamera::ReleaseCamera(released), 0);
        EXPECT_EQ(released, handle);
    }
};

TEST_F(CameraHandleTest, EveryFunctionSucceedsOnALiveHandle) {
    void* handle = Create();
    for (const auto& call : CallsOnAHandle()) {
        EXPECT_TRUE(call.succeeds(handle)) << call.name;
    }
    EXPECT_EQ(zr3DCamera::ReleaseCamera(handle), 0);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(CameraHandleTest, NullHandleFailsEverywhere) {
    ExpectThatEverythingFails(nullptr);
}

TEST_F(CameraHandleTest, UnknownHandleFailsEverywhere) {
    int local = 0;
    ExpectThatEverythingFails(&local);
}

TEST_F(CameraHandleTest, ReleasedHandleFailsEverywhere) {
    void* handle = CreateStarted();
    void* const copy = handle;
    ASSERT_EQ(zr3DCamera::ReleaseCamera(handle), 0);
    ExpectThatEverythingFails(copy);
}

TEST_F(CameraHandleTest, HandleIsNeverUsedAgain) {
    std::vector<void*> seen;
    for (int i = 0; i < 20; ++i) {
        void* handle = Create();
        EXPECT_EQ(std::count(seen.begin(), seen.end(), handle), 0);
        seen.push_back(handle);
        zr3DCamera::ReleaseCamera(handle);
    }
}

TEST_F(CameraHandleTest, NullTextsFail) {
    void* handle = nullptr;
    EXPECT_NE(zr3DCamera::CreateCamera(handle, nullptr), 0);
    EXPECT_EQ(handle, nullptr);
    handle = Create();
    const char* const serial = nullptr;
    EXPECT_NE(zr3DCamera::OpenCamera(handle, serial, 0, 0), 0);
    zr3DCamera::ReleaseCamera(handle);
}

TEST_F(CameraHandleTest, UnknownMakersFail) {
    for (const std::string& type :
         {std::string(), std::string("K"), std::string("kv00"), std::string("XX00"),
          std::string("VK"), std::string(10000, 'x')}) {
        void* handle = nullptr;
        EXPECT_NE(zr3DCamera::CreateCamera(handle, type.c_str()), 0) << type;
        EXPECT_EQ(handle, nullptr);
    }
}

TEST_F(CameraHandleTest, HandlesOfAReplacedOrWithdrawnHeadFailButCloseAndRelease) {
    for (const bool replaced : {true, false}) {
        void* handle = CreateStarted();
        if (replaced) {
            Request(Small());
        } else {
            virtual_head::WithdrawVirtualHead();
        }
        for (const auto& call : CallsOnAHandle()) {
            EXPECT_EQ(call.succeeds(handle), std::string(call.name) == "CloseCamera") << call.name;
        }
        unsigned char* image = nullptr;
        EXPECT_NE(zr3DCamera::SnapShot(handle, image), 0);
        EXPECT_EQ(zr3DCamera::ReleaseCamera(handle), 0);
    }
}

TEST_F(CameraHandleTest, InstanceThatIsNeverReleasedBlocksNobody) {
    CreateStarted();  // stays as it is until the process ends
    void* handle = CreateStarted();
    Trigger(4);
    unsigned char* image = nullptr;
    EXPECT_EQ(zr3DCamera::SnapShot(handle, image), 0);
    EXPECT_EQ(zr3DCamera::ReleaseCamera(handle), 0);
}

TEST_F(CameraHandleTest, TwoThreadsThatReleaseOneHandleReleaseItOnce) {
    for (int round = 0; round < 50; ++round) {
        void* const handle = CreateStarted();
        std::atomic<int> released = 0;
        const auto release = [&] {
            void* copy = handle;
            released += zr3DCamera::ReleaseCamera(copy) == 0 ? 1 : 0;
        };
        std::thread other(release);
        release();
        other.join();
        EXPECT_EQ(released, 1);
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
