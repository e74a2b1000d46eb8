#pragma once

#include "sync/frames/ColorCatch.h"
#include "sync/frames/FramePairing.h"

namespace Korvex3Sync {

/// Where a frame went.
enum class Routed { Paired, Caught };

/// Gives a frame that was taken apart its way: a colour frame to a waiting snapshot, any other
/// frame to the pairing, which is then held to its bound. The images are taken. The caller holds
/// the lock that guards the pairing.
Routed RouteFrame(DecodedFrame& frame, FramePairing& pairing, ColorCatch& colorCatch,
                  FramePairing::Sink& sink);

}  // namespace Korvex3Sync
