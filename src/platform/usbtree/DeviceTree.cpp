#include "platform/usbtree/DeviceTree.h"

#include <cstddef>
#include <utility>

namespace Korvex3Sync::usbtree {

namespace {

constexpr double kFull = 12;
constexpr double kHigh = 480;
constexpr double kSuper = 5000;

}  // namespace

std::string DevicePath(const std::string& port, int speed) {
    const std::size_t bus = port.find('-');
    std::string path = "HCD[" + port.substr(0, bus) + "]-RHUB";
    for (std::size_t end = bus; end != std::string::npos;) {
        const std::size_t from = end + 1;
        end = port.find('.', from);
        path += (from == bus + 1 ? "-PORT[" : "-HUB-PORT[") + port.substr(from, end - from) + "]";
    }
    return path + "-UPT[" + std::to_string(speed) + "]-DEV";
}

int SpeedNumber(std::optional<double> megabits) {
    if (!megabits) {
        return 0;
    }
    return *megabits < kFull ? 1 : *megabits < kHigh ? 2 : *megabits < kSuper ? 3 : 4;
}

void DeviceTree::Replace(std::vector<Device> devices) {
    os::MutexGuard lock(m_mutex);
    m_devices = std::move(devices);
}

void DeviceTree::Erase() {
    os::MutexGuard lock(m_mutex);
    m_devices.reset();
}

bool DeviceTree::Find(unsigned long vendor, unsigned long product,
                      std::vector<std::string>& paths) const {
    os::MutexGuard lock(m_mutex);
    bool found = false;
    for (const Device& device : m_devices.value_or(std::vector<Device>{})) {
        if (device.vendor == vendor && device.product == product) {
            paths.push_back(device.path);
            found = true;
        }
    }
    return found;
}

}  // namespace Korvex3Sync::usbtree
