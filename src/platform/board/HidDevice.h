#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/board/BoardSelection.h"
#include "platform/board/ByteTransport.h"

struct hid_device_;

namespace Korvex3Sync::board {

/// A board that the system lists, whether or not this user may open it.
struct AttachedBoard {
    std::string path;    // names the device for HidDevice::Open
    std::string serial;  // empty: none
};

/// The attached boards that are selected, in the order of the system. Empty if hidapi does not
/// start on this system, which is logged once. Any thread.
std::vector<AttachedBoard> AttachedBoards(const BoardSelection& selection);

/// An open HID device. One thread at a time uses it: hidapi keeps the last error of a device
/// without a lock, and nothing may be in a call when it is closed.
class HidDevice {
public:
    /// Opens a device. Null with the reason if the system refuses. Any thread.
    static std::unique_ptr<HidDevice> Open(const std::string& path, std::string& reason);

    /// Closes.
    ~HidDevice();
    HidDevice(const HidDevice&) = delete;
    HidDevice& operator=(const HidDevice&) = delete;

    /// Sends a report. Blocks until the device has taken it; the system gives up after some
    /// seconds. False if the device did not take it.
    bool Write(const Report& report);
    /// Receives a report, waiting for it at most this long. One without bytes means that there is
    /// none. Nothing if the device is gone.
    std::optional<ReceivedBytes> Read(std::chrono::milliseconds limit);

private:
    explicit HidDevice(hid_device_* device) : m_device(device) {}

    hid_device_* const m_device;
};

}  // namespace Korvex3Sync::board
