#include <chrono>

#include "platform/os/Log.h"
#include "sync/ChannelCodes.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {
namespace {

constexpr auto& kLog = kManagerSyncLog;

/// Only cameras that serve at least this many logical channels give packed frames.
constexpr int kFewestShares = 2;
/// Where a raw frame carries its key.
constexpr std::size_t kKeyByte = 4;
/// Images of a mono frame, and of a set without colour.
constexpr std::size_t kMonoImages = 2;

}  // namespace

/// Delivers to the scan callback and counts; images go back to the pool.
class IManagerSync::SetSink : public FramePairing::Sink {
public:
    explicit SetSink(IManagerSync& manager) : m_manager(manager) {}

    // Used with the frame lock held, which the analysis cannot see through the interface.
    void Deliver(const std::vector<unsigned char*>& images, int width, int height,
                 const std::vector<int>& channels,
                 bool colorMissing) override KORVEX_NO_THREAD_SAFETY_ANALYSIS {
        ScanCounters& counters = m_manager.m_scanCounters;
        if (m_manager.m_pScanCallBack == nullptr) {
            counters.SetWithoutCallback();
            return;
        }
        const void* const context = m_manager.m_pScanContext;
        InScanCallback mark(&m_manager);
        const auto begin = std::chrono::steady_clock::now();
        const auto took = [&] { return std::chrono::steady_clock::now() - begin; };
        try {
            // Copies: what the application does to its vectors changes nothing here.
            m_manager.m_callbackImages.assign(images.begin(), images.end());
            m_manager.m_callbackInfo.assign(channels.begin(), channels.end());
            m_manager.m_pScanCallBack(context, m_manager.m_callbackImages, width, height,
                                      m_manager.m_callbackInfo);
            counters.SetDelivered(took(), images.size() > kMonoImages, colorMissing);
        } catch (...) {
            counters.SetThrown(took());
            LOG(ERROR)
                << "a scan callback threw, or there was no memory to call it; its set is lost";
        }
    }
    void Lose(PairingLoss loss) override {
        if (loss == PairingLoss::ColorWithoutMono) {
            m_manager.m_scanCounters.ColorWithoutMono();
        } else {
            m_manager.m_scanCounters.SetDropped();
        }
    }
    void Release(unsigned char* image) override KORVEX_NO_THREAD_SAFETY_ANALYSIS {
        m_manager.m_imagePool.Release(image);
    }

private:
    IManagerSync& m_manager;
};

void IManagerSync::OnFrame(const void* const& context, const int& cameraId,
                           unsigned char* const& image, const int& width, const int&, const int&) {
    auto* const manager = static_cast<IManagerSync*>(const_cast<void*>(context));
    if (manager == nullptr || image == nullptr) {
        return;
    }
    if (manager->HandleFrame(cameraId, image, width) == Routed::Caught) {
        KORVEX_LOG(kLog) << "end m_bSingleSnapColor=" << manager->m_colorCatch.Armed();
    }
}

Routed IManagerSync::HandleFrame(int cameraId, const unsigned char* raw, int width) {
    os::CriticalSectionGuard frame(m_csFrame);
    const auto id = static_cast<std::size_t>(cameraId);
    if (id >= m_cameraChannels.size()) {
        m_scanCounters.UnroutedFrame();
        return Routed::Paired;
    }
    const auto slot = static_cast<std::size_t>(ChannelGroup(m_cameraChannels[id]));
    if (slot >= m_cameras.size() || m_cameras[slot]->CameraComplexInfo() < kFewestShares) {
        m_scanCounters.UnroutedFrame();
        return Routed::Paired;
    }
    DecodedFrame& decoded = m_decoded;
    decoded.images.clear();
    decoded.widths.clear();
    decoded.heights.clear();
    decoded.channels.clear();
    if (!m_cameras[slot]->SplitPackedFrame(decoded.images, decoded.widths, decoded.heights,
                                           decoded.channels, raw, m_imagePool)) {
        m_scanCounters.UndecodableFrame();
        return Routed::Paired;
    }
    decoded.key = raw[kKeyByte];
    decoded.width = width;
    if (decoded.images.size() == kMonoImages) {
        const TriggerStarts::Run run = m_triggerStarts.Current();
        decoded.colorExpected = run.givesColor;
        m_scanCounters.MonoArrived(m_keys[slot].Take(decoded.key, run));
    }
    SetSink sink(*this);
    const Routed routed = RouteFrame(decoded, m_pairing, m_colorCatch, sink);
    if (routed == Routed::Caught) {
        m_scanCounters.ColorForSnapshot();
    }
    return routed;
}

RETSTATUS IManagerSync::SetScanCallBackFunction(ScanCallBackFunction callback, void* context) {
    os::CriticalSectionGuard frame(m_csFrame);
    m_pScanCallBack = callback;
    m_pScanContext = context;
    return STATUS_SUCCESS;
}

void IManagerSync::ReleasePendingFrames() {
    os::CriticalSectionGuard frame(m_csFrame);
    SetSink sink(*this);
    m_pairing.Clear(sink);
}

}  // namespace Korvex3Sync
