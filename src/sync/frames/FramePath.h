#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Korvex3Sync/Statistics.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "camera/GrabCounters.h"
#include "camera/images/ImagePool.h"
#include "platform/os/FairCriticalSection.h"
#include "sync/frames/ColorCatch.h"
#include "sync/frames/ColorExpectation.h"
#include "sync/frames/FramePairing.h"
#include "sync/frames/FrameRouting.h"
#include "sync/frames/KeyTracker.h"
#include "sync/frames/ScanCounters.h"
#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// The path of a frame within one connection, from a camera's grab thread to the scan callback:
/// splitting, pairing by key, delivery and the counting of losses.
///
/// m_csFrame is held for a whole frame, including the scan callback. It is taken inside a camera's
/// pause and snap locks, and no other lock of the manager is taken inside it. The pool, the catch,
/// the trigger starts and the counters have their own locks and may be used without it.
class FramePath : private FramePairing::Sink {
public:
    /// Where the frames of a camera id go.
    struct Route {
        std::size_t slot;  // the camera's slot; several ids may share one
        bool packed;       // false: its frames are only counted
        int width;         // the size that the camera was opened with
        int height;
    };

    /// `owner` identifies the connection in the check for operations in a scan callback.
    explicit FramePath(const void* owner) : m_owner(owner) {}
    /// Releases the waiting images. No grab thread may be running.
    ~FramePath() override;
    FramePath(const FramePath&) = delete;
    FramePath& operator=(const FramePath&) = delete;

    /// Sets the routes, by camera id, before the grab threads start. Takes no lock: m_csFrame is
    /// never taken inside the device lock, and starting a thread makes the routes visible to it.
    void SetRoutes(std::vector<Route> routes) KORVEX_NO_THREAD_SAFETY_ANALYSIS;

    /// The frame callback of each camera; its context is the FramePath. Runs on the grab thread.
    static void OnFrame(void* const& context, const int& cameraId, unsigned char* const& image,
                        const int& width, const int& height, const int& channels);

    /// Waits for a running scan callback. Always returns 7.
    RETSTATUS SetScanCallBackFunction(ScanCallBackFunction callback, void* context);

    /// Catches the colour frames for a snapshot.
    ColorCatch& SnapshotCatch() { return m_colorCatch; }
    /// Must be told about each write of the trigger mode.
    TriggerStarts& Starts() { return m_triggerStarts; }
    /// The counters of the grab threads.
    const std::shared_ptr<GrabCounters>& Grabbed() const { return m_grabCounters; }

    /// Any thread; takes no lock that is held during a callback. Always returns 7.
    RETSTATUS GetScanStatistics(ScanStatistics& statistics) const;

private:
    /// What the frames of one camera have told so far.
    struct CameraFrames {
        KeyTracker keys;
        ColorExpectation color;
    };

    Routed HandleFrame(int cameraId, const unsigned char* raw, int width);
    /// Null for an unknown camera or one without packed frames; then counts the frame as unrouted.
    const Route* FindRoute(int cameraId) KORVEX_REQUIRES(m_csFrame);

    void Deliver(const std::vector<Image>& images, int width, int height,
                 const std::vector<int>& channels, bool colorMissing) override
        KORVEX_REQUIRES(m_csFrame);
    void Lose(PairingLoss loss) override;

    const void* const m_owner;
    os::FairCriticalSection m_csFrame;
    ImagePool m_imagePool;  // declared before the members that hold its images
    std::vector<Route> m_routes KORVEX_GUARDED_BY(m_csFrame);
    std::vector<CameraFrames> m_cameras KORVEX_GUARDED_BY(m_csFrame);  // by slot
    FramePairing m_pairing KORVEX_GUARDED_BY(m_csFrame);
    DecodedFrame m_decoded KORVEX_GUARDED_BY(m_csFrame);  // kept for its capacity
    std::vector<unsigned char*> m_callbackImages KORVEX_GUARDED_BY(m_csFrame);
    std::vector<int> m_callbackInfo KORVEX_GUARDED_BY(m_csFrame);
    ScanCallBackFunction m_pScanCallBack KORVEX_GUARDED_BY(m_csFrame) = nullptr;
    void* m_pScanContext KORVEX_GUARDED_BY(m_csFrame) = nullptr;
    ColorCatch m_colorCatch;
    TriggerStarts m_triggerStarts;
    ScanCounters m_scanCounters;
    const std::shared_ptr<GrabCounters> m_grabCounters = std::make_shared<GrabCounters>();
};

}  // namespace Korvex3Sync
