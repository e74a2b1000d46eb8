#include "sync/ManagerSync.h"

#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

const char* Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

}  // namespace

IManagerSync::~IManagerSync() {
    CheckNotInScanCallback(&m_csDevice);
    m_cameraSet.Close();
    if (m_board.IsOpen()) {
        m_frames.SetScanCallBackFunction(nullptr, nullptr);
        m_board.SwitchOffAndClose();
    }
    m_board.EndWorkerThread();
    m_statusPoller.Stop();
}

void IManagerSync::RequestStop() {
    m_stop.Set();
    m_snapshot.WakeUp();
}

bool IManagerSync::WaitUnlessStopped(std::chrono::milliseconds nominal) {
    return m_stop.Wait(nominal) == os::WaitResult::TimedOut;
}

void IManagerSync::OnThreadNotify(int, int) {}

void IManagerSync::OnThreadSignal(int) {}

void IManagerSync::OnThreadValue(int value) {
    m_threadValue = value;
}

RETSTATUS IManagerSync::Connect(const char* deviceName, const char* pcbSerial,
                                const std::vector<char*>& camSerials,
                                const std::vector<int>& widths, const std::vector<int>& heights) {
    os::Print("Connect device begin =====================================>\n");
    for (std::size_t i = 0; i < camSerials.size(); ++i) {
        os::Print("ConnectCamera: Camera_%d is %s\n", static_cast<int>(i),
                  Printable(camSerials[i]));
    }
    if (deviceName == nullptr || camSerials.size() != widths.size() ||
        widths.size() != heights.size()) {
        return STATUS_PARAMETER;
    }
    const RETSTATUS opened = m_board.Connect(pcbSerial);
    if (opened != STATUS_SUCCESS) {
        return opened;
    }
    switch (OpenCameras(camSerials, widths, heights)) {
        case 0: {
            m_haveColorCamera = true;
            KORVEX_LOG(kManagerSyncLog) << "m_haveColorCamera=" << m_haveColorCamera
                                        << "cameraNames.size()=" << camSerials.size();
            unsigned char first = 0;
            unsigned char second = 0;
            m_board.QueryCurrentStatus(first, second);
            return STATUS_SUCCESS;
        }
        case 1:
            m_board.ExitProjector();
            return STATUS_PARAMETER;
        case 2:
            m_board.ExitProjector();
            return STATUS_CAMERA;
        default:
            m_board.ExitProjector();
            return STATUS_FAILED;
    }
}

int IManagerSync::OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                              const std::vector<int>& heights) {
    return m_cameraSet.OpenCameras(camSerials, widths, heights);
}

}  // namespace Korvex3Sync
