#include "korvexctl/head/Drivers.h"

#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

std::string WhyNoDevice(const std::string& simulated) {
    return virtual_head::RequestedVirtualHead() != nullptr
               ? simulated
               : std::string(": ") + kNoDriver + "; use --virtual for a simulated head";
}

}  // namespace Korvex3Sync::korvexctl
