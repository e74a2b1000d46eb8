#include "platform/cameras/Drivers.h"

#include <glog/logging.h>

#include <mutex>
#include <string>

#include "platform/cameras/AbsentCamera.h"
#include "platform/cameras/VirtualCamera.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr std::string_view kVirtualHead = "KV";
constexpr std::string_view kGenICam = "GC";  // known, without a driver in this build
constexpr std::size_t kLongestArgument = 80;

void SayThatNothingIsThere() {
    static std::once_flag once;
    std::call_once(once, [] {
        LOG(WARNING) << "zr3DCamera: no camera driver of this build finds a device. For the "
                        "simulated head set KORVEX_VIRTUAL_HEAD to \"default\" or to a head file.";
    });
}

std::shared_ptr<Camera> MakeVirtualCamera(std::string_view typeOrSerial) {
    const auto head = virtual_head::RequestedVirtualHead();
    if (!head) {
        return std::make_shared<AbsentCamera>();
    }
    const bool fails = head->GetFaults().Meet("CreateCamera");
    head->GetJournal().Add("CreateCamera", std::string(typeOrSerial.substr(0, kLongestArgument)),
                           std::to_string(fails ? kFailed : kOk));
    return fails ? nullptr : std::make_shared<VirtualCamera>(head, std::string(typeOrSerial));
}

}  // namespace

std::shared_ptr<Camera> MakeCamera(std::string_view typeOrSerial) {
    const std::string_view maker = typeOrSerial.substr(0, 2);
    if (maker != kVirtualHead && maker != kGenICam) {
        return nullptr;
    }
    if (!virtual_head::RequestedVirtualHead()) {
        SayThatNothingIsThere();
    }
    return maker == kVirtualHead ? MakeVirtualCamera(typeOrSerial)
                                 : std::make_shared<AbsentCamera>();
}

}  // namespace Korvex3Sync::cameras
