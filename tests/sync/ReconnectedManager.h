#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/os/TimeScale.h"
#include "support/Golden.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {

/// A manager over the recorded head that is reconnected; time runs a hundred times faster.
class ReconnectedManager : public testing::Test {
protected:
    using Calls = std::vector<std::string>;

    ReconnectedManager() { recorder::Recorder::Get().Reset(); }
    void Connect() {
        ASSERT_EQ(ConnectRecorded(*m_manager), STATUS_SUCCESS);
        m_connected = recorder::Recorder::Get().Calls().size();
    }
    void ConnectTwoCameras() {
        recorder::Recorder::Get().Attach({{"AAA"}, {"BBB"}});
        SerialList serials{"AAA", "BBB"};
        ASSERT_EQ(m_manager->Connect("any", "BOARD", serials.Pointers(), {8, 8}, {4, 4}),
                  STATUS_SUCCESS);
        m_connected = recorder::Recorder::Get().Calls().size();
    }
    /// Reconnects; keeps what was logged and printed meanwhile.
    int Reconnect() {
        support::Output output;
        const int result = m_manager->ReConnectDeviceEx();
        m_output = output.End();
        return result;
    }
    /// Whether the last Reconnect logged and printed what it should.
    testing::AssertionResult Says(const std::string& section) const {
        return support::MatchesGolden("ReConnectDeviceEx", section, m_output);
    }
    /// The calls since the connect.
    Calls Since() const {
        const Calls calls = recorder::Recorder::Get().Calls();
        return {calls.begin() + static_cast<std::ptrdiff_t>(m_connected), calls.end()};
    }
    static void IgnoreStatus(const void* const&, const unsigned char&, const unsigned char&) {}
    /// Whether frames reach the handler: the grab thread snaps and takes one.
    bool FramesFlow() {
        ++m_frames;
        recorder::Recorder::Get().PushSnap(
            {0, false,
             support::MonoFrame(std::size_t{32}, 1, 2, static_cast<unsigned char>(m_frames))});
        return recorder::Recorder::Get().WaitForHandled(m_frames);
    }

    os::ScopedTimeScale m_scale{0.01};
    std::vector<std::string> m_output;
    std::unique_ptr<IManagerSync> m_manager = std::make_unique<IManagerSync>();
    std::size_t m_connected = 0;
    std::uint64_t m_frames = 0;
};

}  // namespace Korvex3Sync::tests
