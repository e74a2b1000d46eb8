#pragma once

#include <memory>
#include <string_view>

#include "platform/cameras/Camera.h"

namespace Korvex3Sync::cameras {

/// A camera driver.
struct Driver {
    /// The first two characters of the types and serials of its cameras.
    std::string_view prefix;
    /// Whether it can find cameras at all at the moment.
    bool (*canFindCameras)();
    /// Creates an instance for a type or serial, whether or not such a camera is attached. Null if
    /// the driver refuses.
    std::shared_ptr<Camera> (*make)(std::string_view typeOrSerial);
};

/// Registers a driver. Define a static object in the file of the driver: then the driver is in the
/// table if its file is part of the library.
struct DriverRegistration {
    explicit DriverRegistration(const Driver& driver);
};

/// Creates an instance with the driver that the first two characters select. Null for an unknown
/// maker or if the driver refuses. If no driver can find cameras, the log says once per process
/// what to do.
std::shared_ptr<Camera> MakeCamera(std::string_view typeOrSerial);

}  // namespace Korvex3Sync::cameras
