#pragma once

#include <string>
#include <system_error>
#include <vector>

#include "platform/os/UsbDevices.h"

namespace Korvex3Sync::tests {

/// USB devices that no system has. A device opens unless told otherwise.
class FakeUsb {
public:
    /// Attaches a synchronization board.
    void AddBoard(const std::string& port, double megabits, const std::string& node,
                  const std::string& serial = "") {
        os::UsbDevice device;
        device.vendor = 0x3267;
        device.product = 0x5752;
        device.port = port;
        device.node = node;
        device.serial = serial;
        device.megabits = megabits;
        m_devices.push_back(device);
    }

    /// A machine that has the devices of now.
    os::UsbMachine Machine(int openError = 0) const {
        return {[devices = m_devices] { return devices; },
                [openError](const std::filesystem::path&) {
                    return std::error_code(openError, std::generic_category());
                }};
    }

private:
    std::vector<os::UsbDevice> m_devices;
};

}  // namespace Korvex3Sync::tests
