#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// How this machine shows its USB devices. The defaults are the system's own; a test has its own.
struct UsbMachine {
    std::filesystem::path sys = "/sys";
    std::filesystem::path dev = "/dev";
    /// Whether this user can open a device for reading and writing.
    std::function<std::error_code(const std::filesystem::path& node)> tryOpen;

    /// The machine that this process runs on.
    static UsbMachine This();
};

/// A board of a scanner head as the system sees it, whether or not this user may open it.
struct UsbBoard {
    std::string port;                // "2-1.4": bus, then port by port
    std::filesystem::path node;      // of the HID device; else of the USB device
    std::optional<double> megabits;  // per second, as negotiated
    std::error_code openError;       // none: can be opened for reading and writing

    /// "USB port 2-1.4, /dev/hidraw3"
    std::string Where() const;
    bool IsUsb3() const;
};

/// All boards that are plugged in, in the order of their ports. What cannot be read is left out.
std::vector<UsbBoard> FindUsbBoards(const UsbMachine& machine);

}  // namespace Korvex3Sync::korvexctl
