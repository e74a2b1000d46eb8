#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Korvex3Sync/Statistics.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "camera/GrabCounters.h"
#include "camera/images/ImagePool.h"
#include "platform/os/CriticalSection.h"
#include "sync/frames/ColorCatch.h"
#include "sync/frames/FramePairing.h"
#include "sync/frames/FrameRouting.h"
#include "sync/frames/KeyTracker.h"
#include "sync/frames/ScanCounters.h"
#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// The way of a frame within one connection, from a camera's grab thread to the scan callback:
/// split, pairing by key, delivery, and the counting of what is lost.
///
/// m_csFrame is held for a whole frame, also while the scan callback runs; it is taken inside a
/// camera's pause and snap locks, and nothing of a manager is locked inside it. The pool, the
/// catch, the trigger starts and the counters lock themselves and may be used without it.
class FramePath : private FramePairing::Sink {
public:
    /// Where the frames of a camera id belong.
    struct Route {
        std::size_t slot;  // of the camera; several ids may share one
        bool packed;       // frames of other cameras are counted and left alone
        int width;         // the size that the camera was opened with
        int height;
    };

    /// `owner` stands for the connection in the check of operations in a scan callback.
    explicit FramePath(const void* owner) : m_owner(owner) {}
    /// Releases the images that wait. No grab thread may run any more.
    ~FramePath() override;
    FramePath(const FramePath&) = delete;
    FramePath& operator=(const FramePath&) = delete;

    /// The routes by camera id. To be set before the grab threads start, which see them without
    /// m_csFrame being taken here: it is never taken inside the device lock.
    void SetRoutes(std::vector<Route> routes) KORVEX_NO_THREAD_SAFETY_ANALYSIS;

    /// The frame callback of each camera; its context is the FramePath. Runs on the grab thread.
    static void OnFrame(void* const& context, const int& cameraId, unsigned char* const& image,
                        const int& width, const int& height, const int& channels);

    /// Waits while a scan callback runs. Always 7.
    RETSTATUS SetScanCallBackFunction(ScanCallBackFunction callback, void* context);

    /// The colour frames that a snapshot waits for.
    ColorCatch& SnapshotCatch() { return m_colorCatch; }
    /// To be told of each write of the trigger mode.
    TriggerStarts& Starts() { return m_triggerStarts; }
    /// Where the cameras' grab threads count.
    const std::shared_ptr<GrabCounters>& Grabbed() const { return m_grabCounters; }

    /// Any thread; takes no lock that is held during a callback. Always 7.
    RETSTATUS GetScanStatistics(ScanStatistics& statistics) const;

private:
    Routed HandleFrame(int cameraId, const unsigned char* raw, int width);
    /// Null, and counted, when the frames of this camera are not packed ones of a known camera.
    const Route* FindRoute(int cameraId) KORVEX_REQUIRES(m_csFrame);

    void Deliver(const std::vector<Image>& images, int width, int height,
                 const std::vector<int>& channels, bool colorMissing) override
        KORVEX_REQUIRES(m_csFrame);
    void Lose(PairingLoss loss) override;

    const void* const m_owner;
    os::CriticalSection m_csFrame;
    ImagePool m_imagePool;  // before what holds its images
    std::vector<Route> m_routes KORVEX_GUARDED_BY(m_csFrame);
    std::vector<KeyTracker> m_keys KORVEX_GUARDED_BY(m_csFrame);  // by slot
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
