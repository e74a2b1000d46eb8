#include "interface/StateTable.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>

#include "interface/Connected.h"
#include "platform/os/TimeScale.h"
#include "project/DeclaredFunctions.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

/// What a head can be in when an export is called.
enum class State {
    Unconnected,    // board and cameras answer, and nobody has connected them
    Connected,      // board and cameras answer
    NoBoard,        // a reconnection did not open the board, which is not there
    BoardLost,      // a status poll failed, and the board stays silent
    CamerasClosed,  // the cameras were closed
    CamerasFail     // the cameras are open, and fail every call
};

constexpr const char* kCameraCalls[] = {
    "CreateCamera",      "ReleaseCamera",   "GetDeviceTotal",   "OpenCamera",    "CloseCamera",
    "StartCamera",       "SnapShot",        "GetSerialNo",      "GetResolution", "GetColorMode",
    "GetGainRange",      "SetExposureTime", "GetExposureTime",  "SetGain",       "GetGain",
    "SetCameraIntParam", "GetDeviceType",   "ResetCameraState", "UnlockOthers"};

class StateTable : public Connected {
protected:
    /// A connection that is in the state; false when it could not be made.
    void Enter(State state) {
        DisConnectDevice(m_handle);
        Recorder::Get().Reset();
        Recorder::Get().SetUsbPaths({"HCD[0]-UPT[4]-DEV"});
        GiveColorFrames();
        m_scale.emplace(0.01);
        if (state == State::Unconnected) {
            return;
        }
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        ASSERT_NE(m_handle, nullptr);
        switch (state) {
            case State::Unconnected:
                return;
            case State::Connected:
                m_scale.reset();
                m_scale.emplace(0.1);
                return;
            case State::NoBoard:
                Recorder::Get().FailAlways("zr3DInitHidDev");
                Recorder::Get().FailAlways("zr3DQueryFirmwareVersionFast");
                Recorder::Get().SetUsbPaths({});
                ASSERT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
                break;
            case State::BoardLost:
                Recorder::Get().FailAlways("zr3DQueryFirmwareVersionFast");
                Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
                ASSERT_EQ(SetStatusCallBackFunction(
                              m_handle,
                              [](const void* const&, const unsigned char&, const unsigned char&) {},
                              this),
                          STATUS_SUCCESS);
                // One at connect; the second of the thread begins when its first was judged.
                ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", 3));
                break;
            case State::CamerasClosed:
                ASSERT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
                break;
            case State::CamerasFail:
                for (const char* call : kCameraCalls) {
                    Recorder::Get().FailAlways(call);
                }
                break;
        }
        m_scale.reset();
        m_scale.emplace(0.001);  // what waits for frames waits in vain
    }

    void Check(State state, const std::function<const Cell&(const Row&)>& cellOf) {
        for (const Row& row : EveryRow()) {
            SCOPED_TRACE(row.name);
            Enter(state);
            const std::size_t before = Recorder::Get().Calls().size();
            const Cell& cell = cellOf(row);
            const RETSTATUS status = row.call(m_handle);
            const Calls all = Recorder::Get().Calls();
            if (row.endsAlways || (row.endsOnFailure && status != STATUS_SUCCESS)) {
                m_handle = nullptr;  // must not be used again
            }
            EXPECT_EQ(status, cell.status);
            EXPECT_EQ(Calls(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
                      cell.calls);
        }
    }

    std::optional<os::ScopedTimeScale> m_scale;
};

TEST_F(StateTable, HasARowForEveryDeclaredFunction) {
    std::multiset<std::string> names;
    for (const Row& row : EveryRow()) {
        names.insert(row.name.substr(0, row.name.find(' ')));
    }
    EXPECT_EQ(names, DeclaredFunctions());
}

TEST_F(StateTable, WithoutAHandle) {
    Check(State::Unconnected, [](const Row& row) -> const Cell& { return row.unconnected; });
}

TEST_F(StateTable, Connected) {
    Check(State::Connected, [](const Row& row) -> const Cell& { return row.connected; });
}

TEST_F(StateTable, WithoutABoard) {
    Check(State::NoBoard, [](const Row& row) -> const Cell& { return row.noBoard; });
}

TEST_F(StateTable, WithALostBoard) {
    Check(State::BoardLost, [](const Row& row) -> const Cell& { return row.boardLost; });
}

TEST_F(StateTable, WithTheCamerasClosed) {
    Check(State::CamerasClosed, [](const Row& row) -> const Cell& { return row.camerasClosed; });
}

TEST_F(StateTable, WithCamerasThatFailEveryCall) {
    Check(State::CamerasFail, [](const Row& row) -> const Cell& { return row.camerasFail; });
}

}  // namespace
}  // namespace Korvex3Sync::tests
