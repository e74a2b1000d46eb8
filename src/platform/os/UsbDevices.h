#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace Korvex3Sync::os {

/// Where a machine lists its USB devices. The defaults are those of the system; tests use their
/// own.
struct UsbMachine {
    std::filesystem::path sys = "/sys";
    std::filesystem::path dev = "/dev";
    /// Whether this user can open a device for reading and writing.
    std::function<std::error_code(const std::filesystem::path& node)> tryOpen;

    /// The machine that this process runs on.
    static UsbMachine This();
};

/// A USB device as the system reports it, whether or not this user may open it.
struct UsbDevice {
    std::string port;                // "2-1.4": bus, then port by port
    std::filesystem::path node;      // of its HID device, or of the USB device if there is none
    std::string serial;              // empty: none
    std::optional<double> megabits;  // per second, as negotiated
    std::error_code openError;       // none: can be opened for reading and writing

    /// "USB port 2-1.4, /dev/hidraw3"
    std::string Where() const;
    /// Whether the device negotiated USB 3 speed.
    bool IsUsb3() const;
};

/// All attached devices of this vendor and product, in the order of their ports. A device that
/// cannot be read is left out.
std::vector<UsbDevice> FindUsbDevices(const UsbMachine& machine, std::uint16_t vendor,
                                      std::uint16_t product);

}  // namespace Korvex3Sync::os
