#include "sync/frames/FrameRouting.h"

#include "platform/os/Log.h"
#include "sync/connection/ManagerLog.h"

namespace Korvex3Sync {
namespace {

bool CatchForSnapshot(Image& image, ColorCatch& colorCatch) {
    if (!colorCatch.Armed()) {
        return false;
    }
    KORVEX_LOG(kManagerSyncLog) << "m_bSingleSnapColor=" << true;
    return colorCatch.Catch(image);
}

}  // namespace

Routed RouteFrame(DecodedFrame& frame, FramePairing& pairing, ColorCatch& colorCatch,
                  FramePairing::Sink& sink) {
    if (frame.images.size() != 1) {
        pairing.TakeMono(frame, sink);
    } else if (CatchForSnapshot(frame.images.front(), colorCatch)) {
        pairing.ForgoColor(frame.key);
        return Routed::Caught;
    } else {
        pairing.TakeColor(frame, sink);
    }
    if (pairing.Size() > FramePairing::kMostItems) {
        KORVEX_LOG(kManagerSyncLog)
            << "error drop data pThis->_mapVideoItems.size()=" << pairing.Size();
        pairing.DropFirst(sink);
    }
    return Routed::Paired;
}

}  // namespace Korvex3Sync
