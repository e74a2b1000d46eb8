#include "platform/cameras/Drivers.h"

#include <glog/logging.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace Korvex3Sync::cameras {
namespace {

constexpr std::size_t kPrefixLength = 2;

/// Only changed while the library is being loaded.
std::vector<Driver>& Table() {
    static std::vector<Driver> table;
    return table;
}

void SayThatNothingIsThere() {
    static std::atomic_flag said;
    if (!said.test_and_set()) {
        LOG(WARNING) << "zr3DCamera: no camera driver of this build finds a device. For the "
                        "simulated head set KORVEX_VIRTUAL_HEAD to \"default\" or to a head file.";
    }
}

}  // namespace

DriverRegistration::DriverRegistration(const Driver& driver) {
    Table().push_back(driver);
}

std::shared_ptr<Camera> MakeCamera(std::string_view typeOrSerial) {
    const std::vector<Driver>& table = Table();
    const auto driver = std::find_if(table.begin(), table.end(),
                                     [prefix = typeOrSerial.substr(0, kPrefixLength)](
                                         const Driver& each) { return each.prefix == prefix; });
    if (driver == table.end()) {
        return nullptr;
    }
    if (std::none_of(table.begin(), table.end(),
                     [](const Driver& each) { return each.canFindCameras(); })) {
        SayThatNothingIsThere();
    }
    return driver->make(typeOrSerial);
}

}  // namespace Korvex3Sync::cameras
