#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

/// Why no camera is found where none is simulated, and what to do. The camera library of this
/// project has no driver for real cameras; it can be replaced by another that has.
inline constexpr const char* kNoDriver =
    "the camera library of this build has no driver for real cameras";
inline constexpr const char* kNoDriverAdvice =
    "use --virtual for a simulated head; for a real one install a camera library with its driver "
    "in place of ours (docs/architecture.md), then switch the head on and plug it in";

/// The end of a message that no camera was found: the reason when no head is simulated, otherwise
/// `simulated`.
std::string WhyNoCamera(const std::string& simulated);
/// The end of a message that no board answers: what to do; empty when the head is simulated.
std::string WhyNoBoard();

}  // namespace Korvex3Sync::korvexctl
