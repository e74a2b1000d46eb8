#include "sync/frames/FramePath.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/include/PackedFrameLayout.h"
#include "platform/os/Log.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

/// The number of images of a mono frame, and of a set without colour.
constexpr std::size_t kMonoImages = 2;

}  // namespace

FramePath::~FramePath() {
    // Waits until nobody holds the section before its data is destroyed.
    os::FairCriticalSectionGuard frame(m_csFrame);
}

void FramePath::SetRoutes(std::vector<Route> routes) {
    std::size_t slots = 0;
    for (const Route& route : routes) {
        slots = std::max(slots, route.slot + 1);
    }
    m_cameras.assign(slots, {});
    m_routes = std::move(routes);
}

void FramePath::OnFrame(void* const& context, const int& cameraId, unsigned char* const& image,
                        const int& width, const int&, const int&) {
    auto* const path = static_cast<FramePath*>(context);
    if (path == nullptr || image == nullptr) {
        return;
    }
    if (path->HandleFrame(cameraId, image, width) == Routed::Caught) {
        KORVEX_LOG(kManagerSyncLog) << "end m_bSingleSnapColor=" << path->m_colorCatch.Armed();
    }
}

const FramePath::Route* FramePath::FindRoute(int cameraId) {
    const auto id = static_cast<std::size_t>(cameraId);
    if (id >= m_routes.size() || !m_routes[id].packed) {
        m_scanCounters.UnroutedFrame();
        return nullptr;
    }
    return &m_routes[id];
}

Routed FramePath::HandleFrame(int cameraId, const unsigned char* raw, int width) {
    os::FairCriticalSectionGuard frame(m_csFrame);
    const Route* const route = FindRoute(cameraId);
    if (route == nullptr) {
        return Routed::Paired;
    }
    m_decoded.Clear();
    if (!SplitPackedFrame(m_decoded, raw, route->width, route->height, m_imagePool)) {
        m_scanCounters.UndecodableFrame();
        return Routed::Paired;
    }
    m_decoded.key = raw[hardware::kKeyByte];
    m_decoded.width = width;
    CameraFrames& camera = m_cameras[route->slot];
    const TriggerStarts::Run run = m_triggerStarts.Current();
    if (m_decoded.images.size() == kMonoImages) {
        m_scanCounters.MonoArrived(camera.keys.Take(m_decoded.key, run));
        m_decoded.colorExpected = camera.color.TakeMono(run, camera.keys.OfLatestRun());
    } else if (camera.keys.Last() == m_decoded.key) {
        camera.color.TakeColor(run);
    }
    const Routed routed = RouteFrame(m_decoded, m_pairing, m_colorCatch, *this);
    if (routed == Routed::Caught) {
        m_scanCounters.ColorForSnapshot();
    }
    return routed;
}

void FramePath::Deliver(const std::vector<Image>& images, int width, int height,
                        const std::vector<int>& channels, bool colorMissing) {
    if (m_pScanCallBack == nullptr) {
        m_scanCounters.SetWithoutCallback();
        return;
    }
    const void* const context = m_pScanContext;
    const InScanCallback mark(m_owner);
    const auto begin = std::chrono::steady_clock::now();
    const auto took = [&] { return std::chrono::steady_clock::now() - begin; };
    try {
        // Copies, so that changes by the application have no effect here.
        m_callbackImages.clear();
        m_callbackImages.reserve(images.size());
        for (const Image& image : images) {
            m_callbackImages.push_back(image.Pixels());
        }
        m_callbackInfo.assign(channels.begin(), channels.end());
        m_pScanCallBack(context, m_callbackImages, width, height, m_callbackInfo);
        m_scanCounters.SetDelivered(took(), images.size() > kMonoImages, colorMissing);
    } catch (...) {
        m_scanCounters.SetThrown(took());
        KORVEX_LOG_ERROR(kManagerSyncLog)
            << "a scan callback threw, or there was no memory to call it; its set is lost";
    }
}

void FramePath::Lose(PairingLoss loss) {
    if (loss == PairingLoss::ColorWithoutMono) {
        m_scanCounters.ColorWithoutMono();
    } else {
        m_scanCounters.SetDropped();
    }
}

RETSTATUS FramePath::SetScanCallBackFunction(ScanCallBackFunction callback, void* context) {
    os::FairCriticalSectionGuard frame(m_csFrame);
    m_pScanCallBack = callback;
    m_pScanContext = context;
    return STATUS_SUCCESS;
}

RETSTATUS FramePath::GetScanStatistics(ScanStatistics& statistics) const {
    m_scanCounters.Read(statistics);
    statistics.framesAccepted = m_grabCounters->framesAccepted;
    // refusedFrames first: it is part of failedSnaps and must never exceed it.
    statistics.refusedFrames = m_grabCounters->refusedFrames;
    statistics.failedSnaps = m_grabCounters->failedSnaps;
    statistics.rejectedGeometry = m_grabCounters->rejectedGeometry;
    return STATUS_SUCCESS;
}

}  // namespace Korvex3Sync
