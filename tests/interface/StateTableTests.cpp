#include "interface/StateTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "interface/Connected.h"
#include "interface/EveryExport.h"
#include "platform/os/TimeScale.h"

namespace Korvex3Sync {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

/// What a head can be in when an export is called.
enum class State {
    Connected,   // board and cameras answer
    NoBoard,     // a reconnection did not open the board
    BoardLost,   // a status poll failed, and the board goes on being silent
    CamerasLost  // the cameras were closed
};

class StateTable : public Connected {
protected:
    /// A connection that is in the state; false when it could not be made.
    void Enter(State state) {
        DisConnectDevice(m_handle);
        Recorder::Get().Reset();
        GiveColorFrames();
        m_scale.emplace(0.01);
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        switch (state) {
            case State::Connected:
                m_scale.reset();
                m_scale.emplace(0.1);
                return;
            case State::NoBoard:
                Recorder::Get().FailAlways("zr3DInitHidDev");
                ASSERT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
                break;
            case State::BoardLost:
                Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
                ASSERT_EQ(SetStatusCallBackFunction(
                              m_handle,
                              [](const void* const&, const unsigned char&, const unsigned char&) {},
                              this),
                          STATUS_SUCCESS);
                // One at connect; the second of the thread begins when its first was judged.
                ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", 3));
                break;
            case State::CamerasLost:
                ASSERT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
                break;
        }
        m_scale.reset();
        m_scale.emplace(0.001);  // what waits for frames waits in vain
    }

    void Check(State state, const std::function<const Cell&(const Row&)>& cellOf) {
        for (const Row& row : EveryRow()) {
            SCOPED_TRACE(row.name);
            Enter(state);
            ASSERT_NE(m_handle, nullptr);
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

TEST_F(StateTable, HasARowForEveryExportThatTakesAHandle) {
    Calls names;
    for (const Row& row : EveryRow()) {
        names.push_back(row.name);
    }
    for (const Export& one : EveryExport()) {
        EXPECT_EQ(std::count(names.begin(), names.end(), one.name), 1) << one.name;
    }
    EXPECT_EQ(names.size(), EveryExport().size() + RowsWithBodies().size());
}

TEST_F(StateTable, WithoutAHandle) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    for (const Row& row : EveryRow()) {
        EXPECT_EQ(row.call(nullptr), row.nullHandle) << row.name;
    }
    EXPECT_EQ(Recorder::Get().Calls(), Calls{"zr3DInitHidDev(null, 3267, 5752, )"})
        << "of the one with a temporary board";
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
    Check(State::CamerasLost, [](const Row& row) -> const Cell& { return row.camerasLost; });
}

}  // namespace
}  // namespace Korvex3Sync
