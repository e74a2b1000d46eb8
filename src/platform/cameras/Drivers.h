#pragma once

#include <memory>
#include <string_view>

#include "platform/cameras/Camera.h"

namespace Korvex3Sync::cameras {

/// A camera driver.
struct Driver {
    /// The two characters with which the types and serials of its cameras begin.
    std::string_view prefix;
    /// Whether it can find a camera at all now: it has devices to look for.
    bool (*canFindCameras)();
    /// Makes an instance for a type or serial, whether or not such a camera is attached. Null when
    /// the driver refuses.
    std::shared_ptr<Camera> (*make)(std::string_view typeOrSerial);
};

/// Puts a driver into the table. For an object of static storage in the driver's own file, so that
/// a driver is part of the library when its files are.
struct DriverRegistration {
    explicit DriverRegistration(const Driver& driver);
};

/// Makes an instance of the driver that the first two characters name, whatever follows them. Null
/// for an unknown maker, or when the driver refuses. While no driver can find a camera, the log
/// says once in a process what to do.
std::shared_ptr<Camera> MakeCamera(std::string_view typeOrSerial);

}  // namespace Korvex3Sync::cameras
