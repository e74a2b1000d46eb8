#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "platform/os/UsbDevices.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

/// A system's USB devices as files in a temporary folder. A device opens unless told otherwise.
class FakeUsb {
public:
    void Add(const std::string& port, const std::string& vendor, const std::string& product,
             const std::string& megabits, const std::string& hidNode = "",
             const std::string& serial = "") const {
        const auto device = m_folder.Path() / "sys/bus/usb/devices" / port;
        std::filesystem::create_directories(device);
        WriteText(device / "idVendor", vendor + "\n");
        WriteText(device / "idProduct", product + "\n");
        WriteText(device / "speed", megabits + "\n");
        WriteText(device / "busnum", "2\n");
        WriteText(device / "devnum", "17\n");
        if (!serial.empty()) {
            WriteText(device / "serial", serial + "\n");
        }
        if (!hidNode.empty()) {
            std::filesystem::create_directories(device / (port + ":1.0") /
                                                "0003:3267:5752.0001/hidraw" / hidNode);
        }
    }

    os::UsbMachine Machine(int openError = 0) const {
        os::UsbMachine machine;
        machine.sys = m_folder.Path() / "sys";
        machine.dev = m_folder.Path() / "dev";
        machine.tryOpen = [openError](const std::filesystem::path&) {
            return std::error_code(openError, std::generic_category());
        };
        return machine;
    }

    const std::filesystem::path& Path() const { return m_folder.Path(); }

private:
    TemporaryFolder m_folder;
};

}  // namespace Korvex3Sync::tests
