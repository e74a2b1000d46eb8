#include <array>

#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/cameras/CameraSet.h"
#include "sync/cameras/ChannelCodes.h"
#include "sync/connection/ManagerLog.h"

namespace Korvex3Sync {
namespace {

constexpr int kOpened = 0;
constexpr int kBadLists = 1;
constexpr int kCameraFailure = 2;

/// Only cameras that are shared by at least this many entries of the list deliver packed frames.
constexpr int kFewestShares = 2;

/// An address as the number that "%d" prints.
int AsNumber(const void* address) {
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(address));
}

/// The number of entries of the serial list that share each camera.
std::array<unsigned char, kMostGroups> CountShares(const std::vector<int>& codes,
                                                   std::size_t entries) {
    std::array<unsigned char, kMostGroups> tmpFlag{};
    for (std::size_t i = 0; i < entries; ++i) {
        const int tmpCH = codes[i];
        KORVEX_LOG(kManagerSyncLog) << "i=" << i << "tmpCH =" << tmpCH;
        KORVEX_LOG_FORMATTED(kManagerSyncLog, "OpenCameras tmpCH=%d", tmpCH);
        const int group = ChannelGroup(tmpCH);
        unsigned char& count = tmpFlag[static_cast<std::size_t>(group)];
        ++count;
        KORVEX_LOG(kManagerSyncLog) << "tmpFlag[" << group << "]= " << int{count};
        KORVEX_LOG_FORMATTED(kManagerSyncLog, "OpenCameras2 tmpCH=%d", tmpCH);
    }
    return tmpFlag;
}

}  // namespace

int CameraSet::OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                           const std::vector<int>& heights) {
    const std::size_t count = camSerials.size();
    KORVEX_LOG(kManagerSyncLog) << "IShotSync::OpenCameras tmpSerialCount=" << count;
    if (count < 1 || count != widths.size() || count != heights.size()) {
        return kBadLists;
    }
    os::CriticalSectionGuard device(m_csDevice);
    if (!AssignCameraChannels(camSerials)) {
        KORVEX_LOG(kManagerSyncLog)
            << "OpenCameras failed: more than " << kMostGroups << " cameras, or more "
            << "than " << kMostRepeats << " equal neighbours";
        return kCameraFailure;
    }
    if (!CreateCameras(camSerials, widths, heights)) {
        m_cameras.clear();
        return kCameraFailure;
    }
    if (!CheckCameraTotals()) {
        os::Print("Check Camera Total Failed\n");
        KORVEX_LOG(kManagerSyncLog) << "Check Camera Total Failed";
        return kCameraFailure;
    }
    if (!OpenAndStartCameras()) {
        m_cameras.clear();
        os::Print("Open Camera Failed in IShotSync::opencameras\n");
        KORVEX_LOG(kManagerSyncLog) << "Open Camera Failed in IShotSync::opencameras";
        return kCameraFailure;
    }
    m_allCamerasMask = AllCamerasMask(count);
    SetRoutes();
    StartGrabbing();
    m_cameraCount = static_cast<int>(m_cameras.size());
    return kOpened;
}

bool CameraSet::AssignCameraChannels(const std::vector<char*>& camSerials) {
    ChannelAssignment assignment = AssignChannels(camSerials);
    m_cameraSerials = std::move(assignment.serials);
    m_cameraChannels.insert(m_cameraChannels.end(), assignment.codes.begin(),
                            assignment.codes.end());
    return assignment.fits;
}

bool CameraSet::CreateCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                              const std::vector<int>& heights) {
    const std::size_t count = camSerials.size();
    KORVEX_LOG_FORMATTED(kManagerSyncLog, "OpenCameras tmpSerialCount=%d", static_cast<int>(count));
    const auto tmpFlag = CountShares(m_cameraChannels, count);
    std::size_t i = 0;
    for (; i < count; ++i) {
        const int tmpCH = m_cameraChannels[i];
        if (ChannelRepeat(tmpCH) != 0) {
            KORVEX_LOG_FORMATTED(kManagerSyncLog, "OpenCameras tmpCH & 0x0f=%d already opend ",
                                 ChannelRepeat(tmpCH));
            KORVEX_LOG(kManagerSyncLog) << "i=" << i << "tempValue =" << ChannelRepeat(tmpCH);
            continue;
        }
        auto camera = std::make_unique<CPhysicalCameraThread>(&m_listener);
        if (!camera->InializeCamera(camSerials[i])) {
            break;
        }
        camera->SetCameraID(ChannelIndex(tmpCH));
        const int shares = tmpFlag[static_cast<std::size_t>(ChannelGroup(tmpCH))];
        KORVEX_LOG_FORMATTED(kManagerSyncLog,
                             "OpenCameras camSerials[i]=%d SetCameraComplexInfo=%d",
                             AsNumber(camSerials[i]), shares);
        KORVEX_LOG(kManagerSyncLog) << "i=" << i << "camSerials[i] =" << camSerials[i]
                                    << "tmpFlag[(tmpCH & 0xf0) >> 4]=" << shares;
        camera->SetCameraComplexInfo(shares);
        camera->CountInto(m_frames.Grabbed());
        m_cameras.push_back(std::move(camera));
        m_cameraParams.push_back(widths[i]);
        m_cameraParams.push_back(heights[i]);
    }
    KORVEX_LOG(kManagerSyncLog) << "i=" << i << "tmpSerialCount=" << count;
    return i == count;
}

bool CameraSet::CheckCameraTotals() {
    const std::size_t count = m_cameras.size();
    std::size_t k = 0;
    for (; k < count; ++k) {
        int total = 0;
        if (!m_cameras[k]->GetDeviceTotal(total) || total < 1) {
            m_cameras.clear();
            break;
        }
    }
    KORVEX_LOG(kManagerSyncLog) << "index=" << k << "index=" << count;
    return k == count;
}

bool CameraSet::OpenAndStartCameras() {
    for (std::size_t k = 0; k < m_cameras.size(); ++k) {
        if (!m_cameras[k]->OpenCamera(m_cameraSerials[k].c_str(), m_cameraParams[2 * k],
                                      m_cameraParams[2 * k + 1])) {
            for (std::size_t j = 0; j < m_cameras.size(); ++j) {
                if (j < k) {
                    m_cameras[j]->StopThread();
                    m_cameras[j]->CloseCamera();
                }
                m_cameras[j].reset();
            }
            return false;
        }
        m_cameras[k]->StartCamera();
    }
    return true;
}

void CameraSet::SetRoutes() {
    std::vector<FramePath::Route> routes;
    for (const int code : m_cameraChannels) {
        const auto slot = static_cast<std::size_t>(ChannelGroup(code));
        const bool packed = m_cameras[slot]->CameraComplexInfo() >= kFewestShares;
        routes.push_back({slot, packed, m_cameraParams[2 * slot], m_cameraParams[2 * slot + 1]});
    }
    m_frames.SetRoutes(std::move(routes));
}

void CameraSet::StartGrabbing() {
    for (auto& camera : m_cameras) {
        m_frameEvents.emplace_back();
        camera->SetScanCallBackFunction(&FramePath::OnFrame, &m_frames);
        if (!camera->StartThread()) {
            KORVEX_LOG_ERROR(kManagerSyncLog)
                << "a grab thread did not start: camera " << m_frameEvents.size() << " of "
                << m_cameras.size() << " gives no frames";
        }
    }
}

}  // namespace Korvex3Sync
