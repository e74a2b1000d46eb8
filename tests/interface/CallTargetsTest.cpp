#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "interface/CallFrame.h"
#include "interface/Connected.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using support::MatchesGolden;
using support::Output;
using ::testing::Contains;

RETSTATUS Direct(IManagerSync&, const int& in, int& out) {
    out = in + 2;
    return STATUS_CAMERA;
}

/// A client that is not started: it has no service.
class CallTargets : public Connected {
protected:
    CallTargets() { SetServiceClient(&m_client); }
    ~CallTargets() override { SetServiceClient(nullptr); }

    RETSTATUS Call(void* handle) {
        const auto forward = [this](zr3DHandiSyncQT& client, void* given, const int& in, int& out) {
            m_reached = &client;
            m_given = given;
            out = in + 1;
            return STATUS_PROJECTOR;
        };
        return ExportCall(Standard{&Direct, forward}, "Forward", handle, 1, m_out);
    }

    zr3DHandiSyncQT m_client;
    zr3DHandiSyncQT* m_reached = nullptr;
    void* m_given = nullptr;
    int m_out = 0;
};

TEST_F(CallTargets, DirectModeReachesTheManager) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    EXPECT_EQ(Call(m_handle), STATUS_CAMERA);
    EXPECT_EQ(m_out, 3);
    EXPECT_EQ(m_reached, nullptr);
}

TEST_F(CallTargets, ServiceModeReachesTheClientWithTheHandleAsItIs) {
    SetServiceMode(true);
    int id = 0;
    EXPECT_EQ(Call(&id), STATUS_PROJECTOR);
    EXPECT_EQ(m_out, 2);
    EXPECT_EQ(m_reached, &m_client);
    EXPECT_EQ(m_given, &id);
}

TEST_F(CallTargets, ServiceModeRefusesANullHandleItself) {
    SetServiceMode(true);
    EXPECT_EQ(Call(nullptr), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_out, 0);
}

TEST_F(CallTargets, AnExceptionOfEitherTargetIsAFailure) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    const auto direct = [](IManagerSync&) -> RETSTATUS { throw std::bad_alloc(); };
    const auto client = [](zr3DHandiSyncQT&, void*) -> RETSTATUS { throw 1; };
    EXPECT_EQ(ExportCall(Standard{direct, client}, "Throw", m_handle), STATUS_FAILED);
    SetServiceMode(true);
    EXPECT_EQ(ExportCall(Standard{direct, client}, "Throw", m_handle), STATUS_FAILED);
}

TEST_F(CallTargets, TheSwitchOnlyChangesTheModeIfThereIsAClient) {
    EXPECT_EQ(SwitchOnDeviceService(false), STATUS_SUCCESS);
    EXPECT_FALSE(ServiceMode());
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(ServiceMode());
    EXPECT_EQ(ServiceClient(), &m_client);
    int count = 5;
    EXPECT_EQ(GetCameraCount("KV00", count), STATUS_NOT_CONNECTED);
    EXPECT_EQ(SwitchOnDeviceService(false), STATUS_SUCCESS);
    EXPECT_EQ(GetCameraCount("KV00", count), STATUS_SUCCESS);
    EXPECT_EQ(count, 2);
}

TEST_F(Connected, SwitchingServiceModeOffFirstMakesNoClient) {
    EXPECT_EQ(SwitchOnDeviceService(false), STATUS_SUCCESS);
    EXPECT_EQ(ServiceClient(), nullptr);
}

TEST_F(Connected, WithoutAnApplicationObjectTheClientStaysAndItsStartFails) {
    Output output;
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SwitchOnDeviceService", "no application object", output.End()));
    ASSERT_NE(ServiceClient(), nullptr);
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(ServiceMode());
    delete ServiceClient();
    SetServiceClient(nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
