#include "korvexctl/head/Drivers.h"

#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

std::string WhyNoCamera(const std::string& simulated) {
    return virtual_head::RequestedVirtualHead() != nullptr
               ? simulated
               : std::string(": ") + kNoDriver + "; use --virtual for a simulated head";
}

std::string WhyNoBoard() {
    return virtual_head::RequestedVirtualHead() != nullptr
               ? std::string()
               : "; run korvexctl doctor, or use --virtual for a simulated head";
}

}  // namespace Korvex3Sync::korvexctl
