#include "platform/os/UsbDevices.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <system_error>

#include "platform/os/Device.h"

namespace Korvex3Sync::os {

namespace {

namespace fs = std::filesystem;

constexpr double kUsb3Megabits = 5000;

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

/// A vendor or product ID as the system writes it: four hexadecimal digits.
std::string IdText(std::uint16_t id) {
    constexpr int kDigits = 4;
    std::ostringstream text;
    text << std::hex << std::setw(kDigits) << std::setfill('0') << id;
    return text.str();
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

UsbMachine UsbMachine::This() {
    UsbMachine machine;
    machine.tryOpen = CheckDeviceAccess;
    return machine;
}

std::string UsbDevice::Where() const {
    return "USB port " + port + ", " + node.string();
}

bool UsbDevice::IsUsb3() const {
    return megabits && *megabits >= kUsb3Megabits;
}

std::vector<UsbDevice> FindUsbDevices(const UsbMachine& machine, std::uint16_t vendor,
                                      std::uint16_t product) {
    std::vector<UsbDevice> found;
    for (const fs::path& folder : Entries(machine.sys / "bus" / "usb" / "devices")) {
        if (Word(folder / "idVendor") != IdText(vendor) ||
            Word(folder / "idProduct") != IdText(product)) {
            continue;
        }
        UsbDevice device;
        device.port = folder.filename().string();
        device.node = NodeOf(folder, machine.dev);
        device.serial = Line(folder / "serial");
        device.megabits = Number(Word(folder / "speed"));
        device.openError = machine.tryOpen(device.node);
        found.push_back(std::move(device));
    }
    return found;
}

}  // namespace Korvex3Sync::os
