#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace Korvex3Sync::os {

/// A USB device as the system reports it, whether or not this user may open it.
struct UsbDevice {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
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

/// Where the USB devices of a machine come from. Tests use their own.
struct UsbMachine {
    /// All attached devices without `openError`.
    std::function<std::vector<UsbDevice>()> list;
    /// Whether this user can open a device for reading and writing.
    std::function<std::error_code(const std::filesystem::path& node)> tryOpen;

    /// The machine that this process runs on.
    static UsbMachine This();
};

/// All devices that are attached to a port of this machine, in the order of their ports, without
/// `openError`: none is opened. A device that cannot be read is left out.
std::vector<UsbDevice> ListUsbDevices();

/// The devices of this vendor and product, in the order of their ports.
std::vector<UsbDevice> FindUsbDevices(const UsbMachine& machine, std::uint16_t vendor,
                                      std::uint16_t product);

}  // namespace Korvex3Sync::os
