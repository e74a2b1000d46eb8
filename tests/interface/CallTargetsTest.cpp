#include <gtest/gtest.h>

#include <new>

#include "interface/CallFrame.h"
#include "interface/Connected.h"

namespace Korvex3Sync {

/// Stands in for the service client.
class zr3DHandiSyncQT {
public:
    RETSTATUS Forward(void* handle, const int& in, int& out) {
        m_handle = handle;
        out = in + 1;
        return STATUS_PROJECTOR;
    }

    void* m_handle = nullptr;
};

}  // namespace Korvex3Sync

namespace Korvex3Sync::tests {
namespace {

RETSTATUS Direct(IManagerSync&, const int& in, int& out) {
    out = in + 2;
    return STATUS_CAMERA;
}

class CallTargets : public Connected {
protected:
    CallTargets() { SetServiceClient(&m_client); }
    ~CallTargets() override { SetServiceClient(nullptr); }

    zr3DHandiSyncQT m_client;
    int m_out = 0;
};

TEST_F(CallTargets, DirectModeReachesTheManager) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    EXPECT_EQ(
        ExportCall(Standard{&Direct, &zr3DHandiSyncQT::Forward}, "Forward", m_handle, 1, m_out),
        STATUS_CAMERA);
    EXPECT_EQ(m_out, 3);
    EXPECT_EQ(m_client.m_handle, nullptr);
}

TEST_F(CallTargets, ServiceModeReachesTheClientWithTheHandleAsItIs) {
    SwitchOnDeviceService(true);
    int id = 0;
    void* const handle = &id;
    EXPECT_EQ(ExportCall(Standard{&Direct, &zr3DHandiSyncQT::Forward}, "Forward", handle, 1, m_out),
              STATUS_PROJECTOR);
    EXPECT_EQ(m_out, 2);
    EXPECT_EQ(m_client.m_handle, handle);
}

TEST_F(CallTargets, ServiceModeRefusesANullHandleItself) {
    SwitchOnDeviceService(true);
    EXPECT_EQ(
        ExportCall(Standard{&Direct, &zr3DHandiSyncQT::Forward}, "Forward", nullptr, 1, m_out),
        STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_out, 0);
}

TEST_F(CallTargets, AnOperationThatTheClientLacksIsNotSupported) {
    SwitchOnDeviceService(true);
    int id = 0;
    EXPECT_EQ(Project(&id, PROJECT_PATTERN_1), STATUS_NOT_SUPPORTED);
}

TEST_F(CallTargets, AnExceptionOfEitherTargetIsAFailure) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    const auto direct = [](IManagerSync&) -> RETSTATUS { throw std::bad_alloc(); };
    const auto client = [](zr3DHandiSyncQT&, void*) -> RETSTATUS { throw 1; };
    EXPECT_EQ(ExportCall(Standard{direct, client}, "Throw", m_handle), STATUS_FAILED);
    SwitchOnDeviceService(true);
    EXPECT_EQ(ExportCall(Standard{direct, client}, "Throw", m_handle), STATUS_FAILED);
}

}  // namespace
}  // namespace Korvex3Sync::tests
