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

}  // namespace

/// Delivers to the scan callback; images go back to the pool.
class IManagerSync::SetSink : public FramePairing::Sink {
public:
    explicit SetSink(IManagerSync& manager) : m_manager(manager) {}

    // Used with the frame lock held, which the analysis cannot see through the interface.
    void Deliver(const std::vector<unsigned char*>& images, int width, int height,
                 const std::vector<int>& channels) override KORVEX_NO_THREAD_SAFETY_ANALYSIS {
        if (m_manager.m_pScanCallBack == nullptr) {
            return;
        }
        // Copies: what the application does to its vectors changes nothing here.
        m_manager.m_callbackImages.assign(images.begin(), images.end());
        m_manager.m_callbackInfo.assign(channels.begin(), channels.end());
        const void* const context = m_manager.m_pScanContext;
        InScanCallback mark(&m_manager);
        m_manager.m_pScanCallBack(context, m_manager.m_callbackImages, width, height,
                                  m_manager.m_callbackInfo);
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
    if (manager != nullptr && image != nullptr) {
        manager->HandleFrame(cameraId, image, width);
    }
}

void IManagerSync::HandleFrame(int cameraId, const unsigned char* raw, int width) {
    os::CriticalSectionGuard frame(m_csFrame);
    const auto id = static_cast<std::size_t>(cameraId);
    if (id >= m_cameraChannels.size()) {
        return;
    }
    const auto slot = static_cast<std::size_t>(ChannelGroup(m_cameraChannels[id]));
    if (slot >= m_cameras.size() || m_cameras[slot]->CameraComplexInfo() < kFewestShares) {
        return;
    }
    DecodedFrame& decoded = m_decoded;
    decoded.images.clear();
    decoded.widths.clear();
    decoded.heights.clear();
    decoded.channels.clear();
    if (!m_cameras[slot]->SplitPackedFrame(decoded.images, decoded.widths, decoded.heights,
                                           decoded.channels, raw, m_imagePool)) {
        return;
    }
    decoded.key = raw[kKeyByte];
    decoded.width = width;

    SetSink sink(*this);
    if (decoded.images.size() != 1) {
        m_pairing.TakeMono(decoded, sink);
    } else if (m_colorCatch.Armed()) {
        CatchColor(decoded.images.front());
        return;
    } else {
        m_pairing.TakeColor(decoded, sink);
    }
    if (const std::size_t size = m_pairing.EnforceBound(sink); size > 0) {
        KORVEX_LOG(kLog) << "error drop data pThis->_mapVideoItems.size()=" << size;
    }
}

void IManagerSync::CatchColor(unsigned char* image) {
    KORVEX_LOG(kLog) << "m_bSingleSnapColor=" << m_colorCatch.Armed();
    m_colorCatch.Catch(image);
    KORVEX_LOG(kLog) << "end m_bSingleSnapColor=" << m_colorCatch.Armed();
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
