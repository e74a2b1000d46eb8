#pragma once

#include <QList>
#include <QMutex>
#include <QStringList>
#include <QVariant>

#include <chrono>
#include <optional>
#include <vector>

#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"
#include "service/SetAccount.h"

namespace Korvex3Sync {

/// A notice of the service that an image set lies in shared memory.
struct ImageSetNotice {
    bool gray = false;  ///< two mono images; otherwise three images
    QStringList segments;
    int frames = 0;  ///< size of each image, in mono images of 1280 x 1024 bytes
};

/// Whether more image sets are on their way. Only a notice of a scan whose trigger has been
/// switched off says that none are.
bool MoreSetsFollow(const QList<QVariant>& list);

/// Reads a notice. Nothing if it is malformed or names no segment.
std::optional<ImageSetNotice> ReadImageSetNotice(const QList<QVariant>& list);

/// Fetches image sets from shared memory and hands them to the scan callback. The callback runs
/// with m_mutexSharedMemory and m_csScanCallBack held, taken in this order, so it may replace
/// itself, but must not wait for another thread that replaces it. It must not deliver.
class ImageSetDelivery {
public:
    ImageSetDelivery() = default;
    ~ImageSetDelivery();
    ImageSetDelivery(const ImageSetDelivery&) = delete;
    ImageSetDelivery& operator=(const ImageSetDelivery&) = delete;

    /// Waits for a running callback. Any thread.
    void Set(ScanCallBackFunction callback, void* context);
    /// Copies the images, then calls the callback, if there is one with a context. A set that
    /// cannot be read is skipped, with a log record, and so is one without memory. Worker thread.
    struct Result {
        SetFate fate = SetFate::NoMemory;
        std::optional<std::chrono::steady_clock::duration> took;  ///< in the callback
    };
    Result Deliver(const ImageSetNotice& notice);

private:
    void MakeBuffers(const ImageSetNotice& notice);
    void FreeBuffers();
    bool CopyImages(const ImageSetNotice& notice);
    Result CallBack(const ImageSetNotice& notice);

    QMutex m_mutexSharedMemory;
    /// Reused for every set; used by the worker thread only.
    std::vector<unsigned char*> m_vecImageBuffers;
    std::vector<int> m_vecImageValues;
    qint64 m_bufferBytes = 0;  // of each buffer
    os::CriticalSection m_csScanCallBack;
    ScanCallBackFunction m_pScanCallBack KORVEX_GUARDED_BY(m_csScanCallBack) = nullptr;
    void* m_pScanContext KORVEX_GUARDED_BY(m_csScanCallBack) = nullptr;
};

}  // namespace Korvex3Sync
