#include "platform/os/UsbDevices.h"

#include <utility>

#include "platform/os/Device.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::os {

namespace {

constexpr double kUsb3Megabits = 5000;

}  // namespace

UsbMachine UsbMachine::This() {
    return {ListUsbDevices, CheckDeviceAccess};
}

std::string UsbDevice::Where() const {
    return "USB port " + port + ", " + TextOf(node);
}

bool UsbDevice::IsUsb3() const {
    return megabits && *megabits >= kUsb3Megabits;
}

std::vector<UsbDevice> FindUsbDevices(const UsbMachine& machine, std::uint16_t vendor,
                                      std::uint16_t product) {
    std::vector<UsbDevice> found;
    for (UsbDevice& device : machine.list()) {
        if (device.vendor == vendor && device.product == product) {
            device.openError = machine.tryOpen(device.node);
            found.push_back(std::move(device));
        }
    }
    return found;
}

}  // namespace Korvex3Sync::os
