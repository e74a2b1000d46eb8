// The driver of the virtual head's cameras.

#include <string>

#include "platform/cameras/AbsentCamera.h"
#include "platform/cameras/Drivers.h"
#include "platform/cameras/VirtualCamera.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr std::size_t kLongestArgument = 80;

bool HeadIsRequested() {
    return virtual_head::RequestedVirtualHead() != nullptr;
}

std::shared_ptr<Camera> MakeVirtualCamera(std::string_view typeOrSerial) {
    const auto head = virtual_head::RequestedVirtualHead();
    if (!head) {
        return std::make_shared<AbsentCamera>();
    }
    const bool fails = head->GetFaults().Meet("CreateCamera");
    head->GetJournal().Add("CreateCamera", std::string(typeOrSerial.substr(0, kLongestArgument)),
                           fails ? "-1" : "0");
    return fails ? nullptr : std::make_shared<VirtualCamera>(head, std::string(typeOrSerial));
}

const DriverRegistration g_virtualDriver({"KV", HeadIsRequested, MakeVirtualCamera});

}  // namespace
}  // namespace Korvex3Sync::cameras
