#pragma once

#include "sync/ColorCatch.h"
#include "sync/FramePairing.h"

namespace Korvex3Sync {

/// Where a frame went.
enum class Routed { Paired, Caught };

/// Gives a frame that was taken apart its way: a colour frame to a waiting snapshot, any other
/// frame to the pairing, which is then held to its bound. The images are taken over. The caller
/// holds the lock that guards the pairing.
Routed RouteFrame(const DecodedFrame& frame, FramePairing& pairing, ColorCatch& colorCatch,
                  FramePairing::Sink& sink);

}  // namespace Korvex3Sync
