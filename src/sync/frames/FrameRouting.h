#pragma once

#include "sync/frames/ColorCatch.h"
#include "sync/frames/FramePairing.h"

namespace Korvex3Sync {

/// Where a frame went.
enum class Routed { Paired, Caught };

/// Passes a split frame on: a colour frame to a waiting snapshot, any other frame to the pairing,
/// whose size is then limited. Takes the images. The caller holds the lock that guards the pairing.
Routed RouteFrame(DecodedFrame& frame, FramePairing& pairing, ColorCatch& colorCatch,
                  FramePairing::Sink& sink);

}  // namespace Korvex3Sync
