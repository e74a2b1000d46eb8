#pragma once

#include <Korvex3Sync/Status.h>
#include <Korvex3Sync/Types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "device_service/core/SetDelivery.h"
#include "device_service/core/StatusRepeater.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::device_service {

/// A color snapshot in shared memory.
struct SnapshotResult {
    std::vector<std::string> segments;  ///< one for each image; empty for an image that is missing
    int width = 0;
    int height = 0;
};

/// One head, connected in direct mode, whose sets, status and snapshots go to one client.
class Device {
public:
    struct Outputs {
        SetDelivery::Send set;
        StatusRepeater::Send status;
    };

    /// Finds the cameras of the type and connects them with any board. Null with a status and the
    /// reason if there is no camera (2), if their images do not have the size of the service's
    /// images (5), if there is no room in shared memory (0), or with the status of ConnectDevice.
    static std::unique_ptr<Device> Connect(const std::string& type, std::uint64_t generation,
                                           Outputs outputs, RETSTATUS& status, std::string& reason);
    /// No call is inside any more.
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// Closes the head. Calls that are inside on other threads end as DisConnectDevice says. After
    /// this, nothing is sent.
    void Disconnect();

    /// For the exported functions.
    void* const& Handle() const { return m_handle; }
    /// Whether the connection still exists: a failed firmware query ends it.
    bool Live() const;

    /// When a stop returns, all sets and statuses before it have been handed over, and no more
    /// come.
    RETSTATUS SetScanCallback(bool start);
    RETSTATUS SetStatusCallback(bool start);
    /// The last sets come after the trigger has been switched off. Their notices say so.
    RETSTATUS EnableVideoTrigger(CAMERA_TRIGGER_MODE mode, bool enable);
    RETSTATUS SnapColorImage(int cameraIndex, double& exposure, int& gain, CONTROLROUTE route,
                             SnapshotResult& result);

    SetCounts Counts() const { return m_sets->Counts(); }

private:
    Device() = default;

    void* m_handle = nullptr;
    bool m_connected = false;  // used by the owner only
    std::uint64_t m_generation = 0;
    std::unique_ptr<SetDelivery> m_sets;
    std::unique_ptr<StatusRepeater> m_status;
    os::Mutex m_statusCallback;  // one change at a time
    os::Mutex m_trigger;         // one change at a time
    os::Mutex m_snapshot;
    std::unique_ptr<tunnel::AreaWriter> m_snapshots KORVEX_PT_GUARDED_BY(m_snapshot);
    std::uint64_t m_lastSnapshot KORVEX_GUARDED_BY(m_snapshot) = 0;
};

}  // namespace Korvex3Sync::device_service
