#include "service/ImageSetDelivery.h"

#include <QMutexLocker>

#include <algorithm>
#include <memory>
#include <new>

#include "platform/include/ImageSetNotice.h"
#include "platform/include/QtTunnel.h"
#include "service/ServiceLog.h"

namespace Korvex3Sync {
namespace {

/// Elements that a notice must have.
constexpr int kNeededElements = notice::kFrames + 1;
constexpr int kSetWidth = 1280;
constexpr int kSetHeight = 1024;
constexpr qint64 kFrameBytes = qint64{kSetWidth} * kSetHeight;
constexpr int kBuffers = 3;
constexpr int kGrayImages = 2;
constexpr unsigned long long kAreaSegments = 1024;

/// A segment that is locked for reading. The destructor gives it back.
class LockedSegment {
public:
    LockedSegment(QtTunnel::SharedMemory& area, const QString& name)
        : m_area(area), m_segment(area.segment(name, 0)) {
        m_locked = m_segment != nullptr && m_segment->lock();
    }
    ~LockedSegment() {
        if (m_locked) {
            m_segment->unlock();
        }
        if (m_segment != nullptr) {
            m_area.destroy(m_segment);
        }
    }
    LockedSegment(const LockedSegment&) = delete;
    LockedSegment& operator=(const LockedSegment&) = delete;

    explicit operator bool() const { return m_locked; }
    void Read(unsigned char* buffer, qint64 bytes) {
        m_segment->read(reinterpret_cast<char*>(buffer), bytes);
    }

private:
    QtTunnel::SharedMemory& m_area;
    QtTunnel::Segment* const m_segment;
    bool m_locked = false;
};

}  // namespace

bool MoreSetsFollow(const QList<QVariant>& list) {
    const QVariant follow = list.value(notice::kMoreFollow);
    return follow.type() != QVariant::Bool || follow.toBool();
}

std::optional<ImageSetNotice> ReadImageSetNotice(const QList<QVariant>& list) {
    if (list.size() < kNeededElements) {
        return std::nullopt;
    }
    ImageSetNotice set{list[notice::kKind].toString() == "GrayImage",
                       list[notice::kSegments].toStringList(), list[notice::kFrames].toInt()};
    if (set.segments.isEmpty() || set.frames <= 0) {
        return std::nullopt;
    }
    return set;
}

ImageSetDelivery::~ImageSetDelivery() {
    FreeBuffers();
}

void ImageSetDelivery::Set(ScanCallBackFunction callback, void* context) {
    os::CriticalSectionGuard guard(m_csScanCallBack);
    m_pScanContext = context;
    m_pScanCallBack = callback;
}

void ImageSetDelivery::FreeBuffers() {
    for (unsigned char* const buffer : m_vecImageBuffers) {
        delete[] buffer;
    }
    m_vecImageBuffers.clear();
    m_vecImageValues.clear();
}

void ImageSetDelivery::MakeBuffers(const ImageSetNotice& notice) {
    if (static_cast<int>(m_vecImageBuffers.size()) < notice.segments.size()) {
        FreeBuffers();
    }
    if (!m_vecImageBuffers.empty()) {
        return;
    }
    m_bufferBytes = notice.frames * kFrameBytes;
    std::vector<std::unique_ptr<unsigned char[]>> made;
    made.reserve(kBuffers);
    for (int i = 0; i < kBuffers; ++i) {
        made.push_back(std::make_unique<unsigned char[]>(static_cast<std::size_t>(m_bufferBytes)));
    }
    m_vecImageValues.assign(kBuffers, notice.frames);
    m_vecImageBuffers.resize(kBuffers);
    std::transform(made.begin(), made.end(), m_vecImageBuffers.begin(),
                   [](auto& buffer) { return buffer.release(); });
}

bool ImageSetDelivery::CopyImages(const ImageSetNotice& notice) {
    QtTunnel::SharedMemory* const area =
        QtTunnel::SharedMemory::open("ZrSyncService_SharedMemory", kAreaSegments);
    if (area == nullptr) {
        KORVEX_LOG(kServiceLog) << "image set skipped: cannot open the shared memory";
        return false;
    }
    const qint64 bytes = std::min(notice.frames * kFrameBytes, m_bufferBytes);
    const int images = std::min<int>(notice.segments.size(), kBuffers);
    for (int i = 0; i < images; ++i) {
        LockedSegment segment(*area, notice.segments[i]);
        if (!segment) {
            KORVEX_LOG(kServiceLog) << "image set skipped: cannot read the segment "
                                    << notice.segments[i].toStdString();
            return false;
        }
        segment.Read(m_vecImageBuffers[static_cast<std::size_t>(i)], bytes);
    }
    return true;
}

ImageSetDelivery::Result ImageSetDelivery::CallBack(const ImageSetNotice& notice) {
    const int count = notice.gray ? kGrayImages : kBuffers;
    std::vector<unsigned char*> images(m_vecImageBuffers.begin(),
                                       m_vecImageBuffers.begin() + count);
    std::vector<int> values(images.size(), notice.frames);
    os::CriticalSectionGuard guard(m_csScanCallBack);
    if (m_pScanCallBack == nullptr || m_pScanContext == nullptr) {
        return {SetFate::WithoutCallback, std::nullopt};
    }
    SetFate fate = SetFate::Delivered;
    const auto begin = std::chrono::steady_clock::now();
    try {
        m_pScanCallBack(m_pScanContext, images, kSetWidth, kSetHeight, values);
    } catch (...) {
        KORVEX_LOG_ERROR(kServiceLog) << "a scan callback threw";
        fate = SetFate::WithoutCallback;
    }
    return {fate, std::chrono::steady_clock::now() - begin};
}

ImageSetDelivery::Result ImageSetDelivery::Deliver(const ImageSetNotice& notice) try {
    MakeBuffers(notice);
    const QMutexLocker lock(&m_mutexSharedMemory);
    return CopyImages(notice) ? CallBack(notice) : Result{SetFate::Unreadable, std::nullopt};
} catch (const std::bad_alloc&) {
    KORVEX_LOG_ERROR(kServiceLog) << "image set skipped: no memory";
    return {};
}

}  // namespace Korvex3Sync
