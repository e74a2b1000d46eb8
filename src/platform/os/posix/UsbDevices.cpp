#include "platform/os/posix/Sysfs.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

namespace Korvex3Sync::os {

namespace {

namespace fs = std::filesystem;

/// The first word of a small file; empty if there is none.
std::string Word(const fs::path& file) {
    std::ifstream text(file);
    std::string word;
    text >> word;
    return word;
}

/// The first line of a small file; empty if there is none.
std::string Line(const fs::path& file) {
    std::ifstream text(file);
    std::string line;
    std::getline(text, line);
    return line;
}

std::vector<fs::path> Entries(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        entries.push_back(entry->path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::optional<double> Number(const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

/// Finds the HID node of a USB device: <device>/<interface>/<instance>/hidraw/hidrawN.
std::optional<std::string> HidNode(const fs::path& device) {
    for (const fs::path& interface : Entries(device)) {
        if (!interface.filename().string().starts_with(device.filename().string() + ":")) {
            continue;
        }
        for (const fs::path& instance : Entries(interface)) {
            for (const fs::path& node : Entries(instance / "hidraw")) {
                return node.filename().string();
            }
        }
    }
    return std::nullopt;
}

/// A vendor or product ID, which the system writes in hexadecimal digits.
std::optional<std::uint16_t> Id(const fs::path& file) {
    constexpr int kHexadecimal = 16;
    const std::string text = Word(file);
    const char* const end = text.data() + text.size();
    std::uint16_t id = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, id, kHexadecimal);
    return error == std::errc() && rest == end && !text.empty() ? std::optional(id) : std::nullopt;
}

std::string ThreeDigits(const std::string& number) {
    constexpr int kDigits = 3;
    std::ostringstream text;
    text << std::setw(kDigits) << std::setfill('0') << number;
    return text.str();
}

fs::path NodeOf(const fs::path& device, const fs::path& dev) {
    if (const auto hid = HidNode(device)) {
        return dev / *hid;
    }
    return dev / "bus" / "usb" / ThreeDigits(Word(device / "busnum")) /
           ThreeDigits(Word(device / "devnum"));
}

}  // namespace

std::vector<UsbDevice> UsbDevicesOf(const fs::path& sys, const fs::path& dev) {
    std::vector<UsbDevice> found;
    for (const fs::path& folder : Entries(sys / "bus" / "usb" / "devices")) {
        const std::string port = folder.filename().string();
        const auto vendor = Id(folder / "idVendor");
        const auto product = Id(folder / "idProduct");
        // "usb2" is a bus itself.
        if (!vendor || !product || port.find('-') == std::string::npos) {
            continue;
        }
        UsbDevice device;
        device.vendor = *vendor;
        device.product = *product;
        device.port = port;
        device.node = NodeOf(folder, dev);
        device.serial = Line(folder / "serial");
        device.megabits = Number(Word(folder / "speed"));
        found.push_back(std::move(device));
    }
    return found;
}

std::vector<UsbDevice> ListUsbDevices() {
    return UsbDevicesOf("/sys", "/dev");
}

}  // namespace Korvex3Sync::os
