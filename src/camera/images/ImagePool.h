#pragma once

#include <cstddef>
#include <vector>

#include "camera/images/Image.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// Image buffers that are used again, so that a running stream allocates nothing of image size.
///
/// Thread-safe, with a lock of its own that is taken inside any other: images may be taken,
/// released and given away with or without the owner's lock. It must outlive its images.
class ImagePool {
public:
    ImagePool() = default;
    ImagePool(const ImagePool&) = delete;
    ImagePool& operator=(const ImagePool&) = delete;

    /// An image of exactly this size, its content undefined; empty when there is no memory.
    Image Take(std::size_t bytes);

    /// Images that are in use.
    std::size_t Lent() const;
    /// Buffers that wait for their next use.
    std::size_t Free() const;

private:
    friend class Image;

    /// Never allocates: Take has made room.
    void TakeBack(Image::Buffer&& buffer);
    void Forget();

    mutable os::Mutex m_mutex;
    std::size_t m_lent KORVEX_GUARDED_BY(m_mutex) = 0;
    std::vector<Image::Buffer> m_free KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
