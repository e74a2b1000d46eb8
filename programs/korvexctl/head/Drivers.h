#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

/// Why no head is found where none is simulated, and what to do. The platform libraries of this
/// project have no driver for a real head; they can be replaced by others that have.
inline constexpr const char* kNoDriver =
    "the platform libraries of this build have no driver for a real head";
inline constexpr const char* kNoDriverAdvice =
    "use --virtual for a simulated head; for a real one install platform libraries with its "
    "drivers "
    "in place of ours (docs/architecture.md), then switch the head on and plug it in";

/// The end of a message that no device was found: the reason when no head is simulated, otherwise
/// `simulated`.
std::string WhyNoDevice(const std::string& simulated);

}  // namespace Korvex3Sync::korvexctl
