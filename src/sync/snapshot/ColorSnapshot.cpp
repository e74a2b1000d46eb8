#include "sync/snapshot/ColorSnapshot.h"

#include "platform/os/Log.h"
#include "sync/connection/ManagerLog.h"

namespace Korvex3Sync {
namespace {

using std::chrono::milliseconds;

/// Time for frames that are still on their way when the trigger is switched off.
constexpr milliseconds kDrainTime{80};
constexpr milliseconds kSettleTime{10};
constexpr milliseconds kFrameLimit{100000};

/// The reported size, whatever the size of the camera.
constexpr int kReportedWidth = 1280;
constexpr int kReportedHeight = 1024;

constexpr STROBE_STATE kFirstStrobe = STROBE_STATE_3;
constexpr STROBE_STATE kNextStrobe = STROBE_STATE_1;
/// The strobe output for the infrared image, whatever route the caller passes.
constexpr CONTROLROUTE kInfraredRoute = CONTROL_ROUTE_1;

/// The number of exposures and gains of an infrared snapshot: for the second and the third image.
constexpr std::size_t kInfraredSettings = 2;

}  // namespace

struct ColorSnapshot::SnapPhase {
    const char* enter;   // logged at the beginning
    const char* waited;  // logged with the result of the wait
    CONTROLROUTE route;
    STROBE_STATE strobe;
    int camOrder;
    double exposure;
    int gain;
    bool restartCameras;
};

ColorSnapshot::ColorSnapshot(BoardSession& board, CameraSet& cameras, ColorCatch& colorCatch,
                             os::Event& stop)
    : m_board(board), m_cameras(cameras), m_colorCatch(colorCatch), m_stop(stop) {}

void ColorSnapshot::WakeUp() {
    if (const auto event = m_colorCatch.CaughtEvent()) {
        event->Set();
    }
}

void ColorSnapshot::SwitchSnapTrigger(bool on) {
    m_board.EnableVideoTrigger(on ? TRIGGER_SINGLE_COLOR : TRIGGER_PATTERN, on);
}

bool ColorSnapshot::WaitForColorFrame(const char* step) {
    const auto event = m_colorCatch.CaughtEvent();
    os::WaitResult result = os::WaitResult::TimedOut;
    if (event && !m_stop.IsSet()) {
        result = event->Wait(kFrameLimit);
    }
    if (m_stop.IsSet()) {
        result = os::WaitResult::TimedOut;  // a stop also signals the event
    }
    KORVEX_LOG(kManagerSyncLog) << step << " tmpRet=" << static_cast<unsigned long>(result);
    return result == os::WaitResult::Signalled;
}

template <class Steps>
RETSTATUS ColorSnapshot::Snapshot(Steps steps) {
    try {
        return steps();
    } catch (...) {
        m_colorCatch.End();
        m_colorCatch.ReleaseAll();
        throw;
    }
}

bool ColorSnapshot::SnapFirst(const CONTROLROUTE& route) {
    constexpr char kStep[] = "SnapColorImage0";
    KORVEX_LOG(kManagerSyncLog) << kStep;
    SwitchSnapTrigger(false);
    m_stop.Wait(kDrainTime);
    m_colorCatch.Begin();
    m_board.SetStrobeControlledByTrigger(route, kFirstStrobe);
    m_colorCatch.Arm();
    SwitchSnapTrigger(true);
    if (!WaitForColorFrame(kStep)) {
        m_colorCatch.End();
        return false;
    }
    return true;
}

bool ColorSnapshot::SnapNext(const SnapPhase& phase) {
    // The event is reset only between images, so a late frame counts for the next image.
    if (const auto event = m_colorCatch.CaughtEvent()) {
        event->Reset();
    }
    KORVEX_LOG(kManagerSyncLog) << phase.enter;
    SwitchSnapTrigger(false);
    m_board.SetStrobeControlledByTrigger(phase.route, phase.strobe);
    m_cameras.SetCameraExposureAndGain(phase.camOrder, phase.exposure, phase.gain);
    if (phase.restartCameras) {
        m_cameras.ResetState();
    }
    m_stop.Wait(kSettleTime);
    SwitchSnapTrigger(true);
    return WaitForColorFrame(phase.waited);
}

RETSTATUS ColorSnapshot::HandOver(std::size_t count, std::vector<unsigned char*>& images,
                                  int& width, int& height) {
    if (!m_colorCatch.HasFirst()) {
        KORVEX_LOG(kManagerSyncLog) << "SnapColorImage end failed";
        return STATUS_FAILED;
    }
    images.reserve(images.size() + count);  // nothing may throw after TakeAll
    auto slots = m_colorCatch.TakeAll();
    for (std::size_t i = 0; i < count; ++i) {
        images.push_back(slots[i].GiveAway());
    }
    width = kReportedWidth;
    height = kReportedHeight;
    KORVEX_LOG(kManagerSyncLog) << "SnapColorImage end ok";
    return STATUS_SUCCESS;
}

RETSTATUS ColorSnapshot::SnapColorImage(std::vector<unsigned char*>& images, int& width,
                                        int& height, const int& camOrder, const double& exposure,
                                        const int& gain, const CONTROLROUTE& route) {
    return Snapshot([&] {
        if (!SnapFirst(route)) {
            return STATUS_FAILED;
        }
        const bool caught = SnapNext({"SnapColorImage1", "SnapColorImage2", route, kNextStrobe,
                                      camOrder, exposure, gain, true});
        m_colorCatch.End();
        if (!caught) {
            m_colorCatch.ReleaseFirst(1);
            KORVEX_LOG(kManagerSyncLog) << "SnapColorImage end failed";
            return STATUS_FAILED;
        }
        return HandOver(2, images, width, height);
    });
}

RETSTATUS ColorSnapshot::SnapColorImageForIR(std::vector<unsigned char*>& images, int& width,
                                             int& height, const int& camOrder,
                                             const std::vector<double>& exposures,
                                             const std::vector<int>& gains,
                                             const CONTROLROUTE& route) {
    if (exposures.size() != kInfraredSettings || gains.size() != kInfraredSettings) {
        return STATUS_PARAMETER;
    }
    return Snapshot([&] {
        if (!SnapFirst(route)) {
            return STATUS_FAILED;
        }
        if (!SnapNext({"SnapColorImage1", "SnapColorImage1", route, kNextStrobe, camOrder,
                       exposures[0], gains[0], true})) {
            m_colorCatch.ReleaseFirst(1);
            m_colorCatch.End();
            KORVEX_LOG(kManagerSyncLog) << "SnapColorImage end failed";
            return STATUS_FAILED;
        }
        const bool caught = SnapNext({"SnapColorImage2", "SnapColorImage2", kInfraredRoute,
                                      kFirstStrobe, camOrder, exposures[1], gains[1], false});
        m_colorCatch.End();
        if (!caught) {
            m_colorCatch.ReleaseFirst(2);
            KORVEX_LOG(kManagerSyncLog) << "SnapColorImage end failed";
            return STATUS_FAILED;
        }
        return HandOver(3, images, width, height);
    });
}

}  // namespace Korvex3Sync
