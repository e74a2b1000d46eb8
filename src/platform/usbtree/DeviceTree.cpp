#include "platform/usbtree/DeviceTree.h"

#include <utility>

namespace Korvex3Sync::usbtree {

std::string DevicePath(int speed) {
    return "HCD[0]-RHUB-PORT[2]-HUB-PORT[1]-UPT[" + std::to_string(speed) + "]-DEV";
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
