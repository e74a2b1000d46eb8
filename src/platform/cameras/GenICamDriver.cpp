// The driver for GenICam cameras. This version only knows their prefix and finds no cameras.

#include "platform/cameras/AbsentCamera.h"
#include "platform/cameras/Drivers.h"

namespace Korvex3Sync::cameras {
namespace {

std::shared_ptr<Camera> Make(std::string_view) {
    return std::make_shared<AbsentCamera>();
}

const DriverRegistration g_registration({"GC", [] { return false; }, Make});

}  // namespace
}  // namespace Korvex3Sync::cameras
