#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "platform/os/TimeScale.h"
#include "support/LogCapture.h"
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
    /// Reconnects; keeps what was printed and logged meanwhile, without what grab threads said.
    int Reconnect() {
        const std::size_t records = m_log.Records().size();
        testing::internal::CaptureStdout();
        const int result = m_manager->ReConnectDeviceEx();
        std::istringstream printed(testing::internal::GetCapturedStdout());
        m_printed.clear();
        for (std::string line; std::getline(printed, line);) {
            if (!line.ends_with(" Snap Failed")) {
                m_printed.push_back(line);
            }
        }
        m_logged.clear();
        const auto all = m_log.Records();
        for (std::size_t i = records; i < all.size(); ++i) {
            if (all[i].starts_with("ManagerSync: ")) {
                m_logged.push_back(all[i].substr(13));
            }
        }
        return result;
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
    support::LogCapture m_log;
    std::vector<std::string> m_printed;
    std::vector<std::string> m_logged;
    std::unique_ptr<IManagerSync> m_manager = std::make_unique<IManagerSync>();
    std::size_t m_connected = 0;
    std::uint64_t m_frames = 0;
};

}  // namespace Korvex3Sync::tests
