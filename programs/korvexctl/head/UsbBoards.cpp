#include "korvexctl/head/UsbBoards.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <system_error>

#include "platform/os/Device.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

constexpr const char* kVendor = "3267";
constexpr const char* kProduct = "5752";
constexpr double kUsb3Megabits = 5000;

/// The first word of a small file; empty when there is none.
std::string Word(const fs::path& file) {
    std::ifstream text(file);
    std::string word;
    text >> word;
    return word;
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

/// A HID device lies below the USB device, in an interface and an instance of its own:
/// <device>/<interface>/<instance>/hidraw/hidrawN.
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
    machine.tryOpen = os::CheckDeviceAccess;
    return machine;
}

std::string UsbBoard::Where() const {
    return "USB port " + port + ", " + node.string();
}

bool UsbBoard::IsUsb3() const {
    return megabits && *megabits >= kUsb3Megabits;
}

std::vector<UsbBoard> FindUsbBoards(const UsbMachine& machine) {
    std::vector<UsbBoard> boards;
    for (const fs::path& device : Entries(machine.sys / "bus" / "usb" / "devices")) {
        if (Word(device / "idVendor") != kVendor || Word(device / "idProduct") != kProduct) {
            continue;
        }
        UsbBoard board;
        board.port = device.filename().string();
        board.node = NodeOf(device, machine.dev);
        board.megabits = Number(Word(device / "speed"));
        board.openError = machine.tryOpen(board.node);
        boards.push_back(std::move(board));
    }
    return boards;
}

}  // namespace Korvex3Sync::korvexctl
