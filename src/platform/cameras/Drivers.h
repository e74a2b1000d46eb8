#pragma once

#include <memory>
#include <string_view>

#include "platform/cameras/Camera.h"

namespace Korvex3Sync::cameras {

/// Makes an instance of the driver that the first two characters of a camera type or serial name,
/// whatever follows them. Null for an unknown maker, or when the driver refuses. A
/// known maker whose driver finds nothing gives an instance all the same, and the log says once in
/// a process what to do.
std::shared_ptr<Camera> MakeCamera(std::string_view typeOrSerial);

}  // namespace Korvex3Sync::cameras
