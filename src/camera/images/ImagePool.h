#pragma once

#include <cstddef>
#include <vector>

#include "camera/images/Image.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// Reuses image buffers, so that a running stream allocates nothing of image size.
///
/// Thread-safe: its own lock is taken inside any other, so images may be taken, released and given
/// away with or without the owner's lock. It must outlive its images.
class ImagePool {
public:
    ImagePool() = default;
    ImagePool(const ImagePool&) = delete;
    ImagePool& operator=(const ImagePool&) = delete;

    /// An image of exactly this size with undefined content; empty if memory runs out.
    Image Take(std::size_t bytes);

    /// Images that are in use.
    std::size_t Lent() const;
    /// Buffers that are not in use.
    std::size_t Free() const;

private:
    friend class Image;

    /// Never allocates: Take has reserved the space.
    void TakeBack(Image::Buffer&& buffer);
    void Forget();

    mutable os::Mutex m_mutex;
    std::size_t m_lent KORVEX_GUARDED_BY(m_mutex) = 0;
    std::vector<Image::Buffer> m_free KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
