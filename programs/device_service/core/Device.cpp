#include "device_service/core/Device.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>
#include <Korvex3Sync/Statistics.h>

#include <utility>

#include "device_service/core/Cameras.h"
#include "device_service/core/ImageAreas.h"

namespace Korvex3Sync::device_service {

namespace {

/// Why these cameras cannot be used; empty if they can.
std::string WrongSize(const CameraList& cameras) {
    for (std::size_t i = 0; i < cameras.serials.size(); ++i) {
        if (cameras.widths[i] != kImageWidth || cameras.heights[i] != kImageHeight) {
            return std::string("camera ") + cameras.serials[i] + " has images of " +
                   std::to_string(cameras.widths[i]) + " x " + std::to_string(cameras.heights[i]) +
                   "; service mode supports " + std::to_string(kImageWidth) + " x " +
                   std::to_string(kImageHeight) + " only";
        }
    }
    return "";
}

void OnStatus(const void* const& context, const unsigned char& statusA,
              const unsigned char& statusB) {
    static_cast<StatusRepeater*>(const_cast<void*>(context))->Polled(statusA, statusB);
}

}  // namespace

std::unique_ptr<Device> Device::Connect(const std::string& type, std::uint64_t generation,
                                        Outputs outputs, RETSTATUS& status, std::string& reason) {
    const CameraList cameras(type);
    if (cameras.serials.empty()) {
        status = STATUS_CAMERA;
        reason = "no camera of type " + type;
        return nullptr;
    }
    reason = WrongSize(cameras);
    if (!reason.empty()) {
        status = STATUS_NOT_SUPPORTED;
        return nullptr;
    }
    status = STATUS_FAILED;
    std::unique_ptr<Device> device(new Device);
    device->m_generation = generation;
    auto area = MakeSetArea(reason);
    if (!area) {
        return nullptr;
    }
    device->m_snapshots = MakeSnapshotArea(reason);
    if (!device->m_snapshots) {
        return nullptr;
    }
    device->m_status = std::make_unique<StatusRepeater>(std::move(outputs.status));
    if (!device->m_status->Start()) {
        reason = "no thread for the status";
        return nullptr;
    }
    void* handle = nullptr;
    status =
        ConnectDevice(type.c_str(), "", cameras.serials, cameras.widths, cameras.heights, handle);
    if (status != STATUS_SUCCESS) {
        reason = "the head cannot be connected, status " + std::to_string(status);
        return nullptr;
    }
    device->m_handle = handle;
    device->m_connected = true;
    device->m_sets =
        std::make_unique<SetDelivery>(handle, generation, std::move(area), std::move(outputs.set));
    return device;
}

Device::~Device() {
    Disconnect();
}

void Device::Disconnect() {
    if (!std::exchange(m_connected, false)) {
        return;
    }
    // m_handle stays as it is: calls on other threads may be reading it.
    void* handle = m_handle;
    DisConnectDevice(handle);
    m_status->Stop();
}

bool Device::Live() const {
    ScanStatistics ignored;
    return GetScanStatistics(m_handle, ignored) == STATUS_SUCCESS;
}

RETSTATUS Device::SetScanCallback(bool start) {
    return SetScanCallBackFunction(m_handle, start ? &SetDelivery::OnSet : nullptr,
                                   start ? m_sets.get() : nullptr);
}

RETSTATUS Device::SetStatusCallback(bool start) {
    const os::MutexGuard guard(m_statusCallback);
    if (start) {
        m_status->Begin();
        return SetStatusCallBackFunction(m_handle, &OnStatus, m_status.get());
    }
    const RETSTATUS status = SetStatusCallBackFunction(m_handle, nullptr, nullptr);
    if (status == STATUS_SUCCESS) {
        m_status->Stop();
    }
    return status;
}

RETSTATUS Device::EnableVideoTrigger(CAMERA_TRIGGER_MODE mode, bool enable) {
    const os::MutexGuard guard(m_trigger);
    const bool before = m_sets->MoreFollow(enable);
    const RETSTATUS status = Korvex3Sync::EnableVideoTrigger(m_handle, mode, enable);
    if (status != STATUS_SUCCESS) {
        m_sets->MoreFollow(before);
    }
    return status;
}

RETSTATUS Device::SnapColorImage(int cameraIndex, double& exposure, int& gain, CONTROLROUTE route,
                                 SnapshotResult& result) {
    std::vector<unsigned char*> images;
    const RETSTATUS status = Korvex3Sync::SnapColorImage(
        m_handle, images, result.width, result.height, cameraIndex, exposure, gain, route);
    std::vector<std::unique_ptr<unsigned char[]>> owned(images.begin(), images.end());
    if (status != STATUS_SUCCESS) {
        return status;
    }
    const os::MutexGuard guard(m_snapshot);
    const bool written =
        m_snapshots->WriteSet(SegmentsOf(m_generation, ++m_lastSnapshot, images, result.segments));
    return written ? STATUS_SUCCESS : STATUS_FAILED;
}

}  // namespace Korvex3Sync::device_service
