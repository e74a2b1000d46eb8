#include "platform/os/UsbDevices.h"

#include "platform/os/windows/System.h"

// Before the headers of the devices, so that their identifiers are defined here.
#include <initguid.h>

#include <cfgmgr32.h>
#include <hidclass.h>
#include <setupapi.h>
#include <usbiodef.h>
#include <winioctl.h>
// After those that it needs.
#include <usbioctl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace Korvex3Sync::os {

namespace {

constexpr double kLowMegabits = 1.5;
constexpr double kFullMegabits = 12;
constexpr double kHighMegabits = 480;
constexpr double kSuperMegabits = 5000;
constexpr double kSuperPlusMegabits = 10000;

struct DeviceSetCloser {
    void operator()(void* devices) const { ::SetupDiDestroyDeviceInfoList(devices); }
};
using DeviceSet = std::unique_ptr<void, DeviceSetCloser>;

/// The first text of a property; empty without it.
std::wstring Property(HDEVINFO devices, SP_DEVINFO_DATA& device, DWORD property) {
    constexpr std::size_t kMost = 1024;
    std::array<wchar_t, kMost> text{};
    // The last place stays 0.
    if (::SetupDiGetDeviceRegistryPropertyW(devices, &device, property, nullptr,
                                            reinterpret_cast<BYTE*>(text.data()),
                                            sizeof(text) - sizeof(wchar_t), nullptr) == 0) {
        return {};
    }
    return text.data();
}

/// The name of a device, "USB\VID_3267&PID_5752\K3-0007"; empty if it has gone.
std::wstring NameOf(DEVINST device) {
    std::array<wchar_t, MAX_DEVICE_ID_LEN + 1> name{};
    return ::CM_Get_Device_IDW(device, name.data(), static_cast<ULONG>(name.size()), 0) ==
                   CR_SUCCESS
               ? name.data()
               : std::wstring();
}

/// Where a device of a kind is opened; empty if it is not of that kind.
std::wstring PathOf(DEVINST device, const GUID& kind) {
    const std::wstring name = NameOf(device);
    // Without a name it would be any device of the kind.
    const DeviceSet devices(name.empty()
                                ? INVALID_HANDLE_VALUE
                                : ::SetupDiGetClassDevsW(&kind, name.c_str(), nullptr,
                                                         DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
    SP_DEVICE_INTERFACE_DATA entry{};
    entry.cbSize = sizeof(entry);
    if (devices.get() == INVALID_HANDLE_VALUE ||
        ::SetupDiEnumDeviceInterfaces(devices.get(), nullptr, &kind, 0, &entry) == 0) {
        return {};
    }
    DWORD size = 0;
    ::SetupDiGetDeviceInterfaceDetailW(devices.get(), &entry, nullptr, 0, &size, nullptr);
    if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) {
        return {};
    }
    const auto memory = std::make_unique<std::byte[]>(size);
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(memory.get());
    detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
    return ::SetupDiGetDeviceInterfaceDetailW(devices.get(), &entry, detail, size, nullptr,
                                              nullptr) != 0
               ? detail->DevicePath
               : std::wstring();
}

/// Where the HID device of a USB device is opened: it is below the device, or below one of its
/// interfaces.
std::wstring HidPathBelow(DEVINST device) {
    DEVINST child = 0;
    for (auto found = ::CM_Get_Child(&child, device, 0); found == CR_SUCCESS;
         found = ::CM_Get_Sibling(&child, child, 0)) {
        std::wstring path = PathOf(child, GUID_DEVINTERFACE_HID);
        if (path.empty()) {
            path = HidPathBelow(child);
        }
        if (!path.empty()) {
            return path;
        }
    }
    return {};
}

/// The number in hexadecimal digits behind a word.
std::optional<std::uint16_t> Id(const std::string& name, std::string_view word) {
    constexpr std::size_t kDigits = 4;
    constexpr int kHexadecimal = 16;
    const std::size_t at = name.find(word);
    if (at == std::string::npos || name.size() < at + word.size() + kDigits) {
        return std::nullopt;
    }
    const char* const from = name.data() + at + word.size();
    std::uint16_t id = 0;
    const auto [rest, error] = std::from_chars(from, from + kDigits, id, kHexadecimal);
    return error == std::errc() && rest == from + kDigits ? std::optional(id) : std::nullopt;
}

/// The end of a device's name. One with "&" was made up by the system.
std::string SerialIn(const std::string& name) {
    const std::string end = name.substr(name.rfind('\\') + 1);
    return end.find('&') == std::string::npos ? end : std::string();
}

/// "PCIROOT(0)#PCI(1400)#USBROOT(0)#USB(2)#USB(1)": the bus, which ends before the first port, and
/// the ports, "2.1".
struct Location {
    std::string bus;
    std::string ports;
};

Location LocationIn(const std::string& path) {
    constexpr std::string_view kPort = "#USB(";
    std::size_t at = path.find(kPort);
    Location location{path.substr(0, at), ""};
    for (; at != std::string::npos; at = path.find(kPort, at + 1)) {
        const std::size_t from = at + kPort.size();
        location.ports +=
            (location.ports.empty() ? "" : ".") + path.substr(from, path.find(')', from) - from);
    }
    return location;
}

/// What the hub above a device says of it, without a right to use the hub.
template <typename Answer>
bool AskHub(HANDLE hub, DWORD question, Answer& answer) {
    DWORD size = 0;
    return ::DeviceIoControl(hub, question, &answer, sizeof(answer), &answer, sizeof(answer), &size,
                             nullptr) != 0;
}

std::optional<double> SpeedOf(DEVINST device, ULONG port) {
    DEVINST parent = 0;
    if (::CM_Get_Parent(&parent, device, 0) != CR_SUCCESS) {
        return std::nullopt;
    }
    const Handle hub =
        Opened(::CreateFileW(PathOf(parent, GUID_DEVINTERFACE_USB_HUB).c_str(), GENERIC_WRITE,
                             FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!hub) {
        return std::nullopt;
    }
    USB_NODE_CONNECTION_INFORMATION_EX_V2 fast{};
    fast.ConnectionIndex = port;
    fast.Length = sizeof(fast);
    fast.SupportedUsbProtocols.Usb300 = 1;
    if (AskHub(hub.get(), IOCTL_USB_GET_NODE_CONNECTION_INFORMATION_EX_V2, fast)) {
        if (fast.Flags.DeviceIsOperatingAtSuperSpeedPlusOrHigher) {
            return kSuperPlusMegabits;
        }
        if (fast.Flags.DeviceIsOperatingAtSuperSpeedOrHigher) {
            return kSuperMegabits;
        }
    }
    USB_NODE_CONNECTION_INFORMATION_EX slow{};
    slow.ConnectionIndex = port;
    if (!AskHub(hub.get(), IOCTL_USB_GET_NODE_CONNECTION_INFORMATION_EX, slow)) {
        return std::nullopt;
    }
    switch (slow.Speed) {
        case UsbLowSpeed:
            return kLowMegabits;
        case UsbFullSpeed:
            return kFullMegabits;
        case UsbHighSpeed:
            return kHighMegabits;
        case UsbSuperSpeed:
            return kSuperMegabits;
        default:
            return std::nullopt;
    }
}

struct Found {
    Location location;
    UsbDevice device;
};

std::optional<Found> Read(HDEVINFO devices, SP_DEVINFO_DATA& data) {
    const std::string name = Narrow(NameOf(data.DevInst));
    const auto vendor = Id(name, "VID_");
    const auto product = Id(name, "PID_");
    Found found{LocationIn(Narrow(Property(devices, data, SPDRP_LOCATION_PATHS))), {}};
    if (!vendor || !product || found.location.ports.empty()) {
        return std::nullopt;
    }
    found.device.vendor = *vendor;
    found.device.product = *product;
    found.device.serial = SerialIn(name);
    const std::wstring hid = HidPathBelow(data.DevInst);
    found.device.node = hid.empty() ? PathOf(data.DevInst, GUID_DEVINTERFACE_USB_DEVICE) : hid;
    DWORD port = 0;
    if (::SetupDiGetDeviceRegistryPropertyW(devices, &data, SPDRP_ADDRESS, nullptr,
                                            reinterpret_cast<BYTE*>(&port), sizeof(port),
                                            nullptr) != 0) {
        found.device.megabits = SpeedOf(data.DevInst, port);
    }
    return found;
}

}  // namespace

std::vector<UsbDevice> ListUsbDevices() {
    const DeviceSet devices(::SetupDiGetClassDevsW(&GUID_DEVINTERFACE_USB_DEVICE, nullptr, nullptr,
                                                   DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
    if (devices.get() == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::vector<Found> found;
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof(data);
    for (DWORD number = 0; ::SetupDiEnumDeviceInfo(devices.get(), number, &data) != 0; ++number) {
        if (auto device = Read(devices.get(), data)) {
            found.push_back(*std::move(device));
        }
    }
    std::sort(found.begin(), found.end(), [](const Found& left, const Found& right) {
        return std::pair(left.location.bus, left.location.ports) <
               std::pair(right.location.bus, right.location.ports);
    });
    std::vector<UsbDevice> list;
    int bus = 0;
    for (std::size_t number = 0; number < found.size(); ++number) {
        // Buses have no numbers here; they are counted in the order of their names.
        if (number == 0 || found[number].location.bus != found[number - 1].location.bus) {
            ++bus;
        }
        list.push_back(std::move(found[number].device));
        list.back().port = std::to_string(bus) + "-" + found[number].location.ports;
    }
    return list;
}

}  // namespace Korvex3Sync::os
