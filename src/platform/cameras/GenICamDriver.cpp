// The driver for GenICam cameras. This version only knows their prefix and finds no cameras.

#include "platform/cameras/AbsentCamera.h"
#include "platform/cameras/Drivers.h"

namespace Korvex3Sync::cameras {
namespace {

std::shared_ptr<Camera> MakeAbsentCamera(std::string_view) {
    return std::make_shared<AbsentCamera>();
}

const DriverRegistration g_genICamDriver({"GC", [] { return false; }, MakeAbsentCamera});

}  // namespace
}  // namespace Korvex3Sync::cameras
