#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace Korvex3Sync {

class ImagePool;

/// A buffer of pixels with one owner. The destructor returns it to its pool, on any thread. The
/// pool must outlive it. An image is empty when default-constructed, moved from, released or given
/// away.
class Image {
public:
    /// An ordinary `new[]` block.
    struct Buffer {
        std::unique_ptr<unsigned char[]> pixels;
        std::size_t bytes = 0;
    };

    Image() = default;
    Image(Image&& other) noexcept = default;
    Image& operator=(Image&& other) noexcept {
        Release();
        m_pool = other.m_pool;
        m_buffer = std::move(other.m_buffer);
        return *this;
    }
    ~Image() { Release(); }

    explicit operator bool() const { return m_buffer.pixels != nullptr; }
    /// Null for an empty image. Valid as long as the image holds the buffer.
    unsigned char* Pixels() const { return m_buffer.pixels.get(); }

    /// Returns the buffer to the pool now.
    void Release() {
        if (*this) {
            ReturnToPool();
        }
    }
    /// Takes the buffer out of the pool for good: the caller frees it with `delete[]`. Null for an
    /// empty image.
    unsigned char* GiveAway();

private:
    friend class ImagePool;
    Image(ImagePool& pool, Buffer buffer) : m_pool(&pool), m_buffer(std::move(buffer)) {}
    void ReturnToPool();

    ImagePool* m_pool = nullptr;
    Buffer m_buffer;
};

}  // namespace Korvex3Sync
