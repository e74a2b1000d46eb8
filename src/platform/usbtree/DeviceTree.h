#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::usbtree {

/// A device on the bus.
struct Device {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string path;
};

/// The path of the device at a port ("2-1.4": bus, then port by port): hubs and ports, then
/// `UPT[speed]-DEV`. That text appears only at the end of a path.
std::string DevicePath(const std::string& port, int speed);
/// The number of a speed in a path: 1 low, 2 full, 3 high, 4 everything faster, 0 unknown.
int SpeedNumber(std::optional<double> megabits);

/// The devices of the last enumeration. Thread-safe.
class DeviceTree {
public:
    void Replace(std::vector<Device> devices);
    void Erase();
    /// Appends the paths of the devices with these identifiers. False if there is none, or no tree.
    bool Find(unsigned long vendor, unsigned long product, std::vector<std::string>& paths) const;

private:
    mutable os::Mutex m_mutex;
    std::optional<std::vector<Device>> m_devices
        KORVEX_GUARDED_BY(m_mutex);  // nothing: not enumerated
};

}  // namespace Korvex3Sync::usbtree
