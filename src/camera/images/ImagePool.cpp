#include "camera/images/ImagePool.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Korvex3Sync {

void Image::ReturnToPool() {
    m_pool->TakeBack(std::move(m_buffer));
}

unsigned char* Image::GiveAway() {
    if (*this) {
        m_pool->Forget();
    }
    return m_buffer.pixels.release();
}

Image ImagePool::Take(std::size_t bytes) {
    os::MutexGuard lock(m_mutex);
    const auto fits =
        std::find_if(m_free.begin(), m_free.end(),
                     [bytes](const Image::Buffer& buffer) { return buffer.bytes == bytes; });
    Image::Buffer buffer;
    if (fits != m_free.end()) {
        buffer = std::move(*fits);
        m_free.erase(fits);
    } else {
        try {
            m_free.reserve(m_free.size() + m_lent + 1);
        } catch (const std::bad_alloc&) {
            return {};
        }
        buffer = {std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[bytes]), bytes};
        if (buffer.pixels == nullptr) {
            return {};
        }
    }
    ++m_lent;
    return {*this, std::move(buffer)};
}

void ImagePool::TakeBack(Image::Buffer&& buffer) {
    os::MutexGuard lock(m_mutex);
    --m_lent;
    m_free.push_back(std::move(buffer));
}

void ImagePool::Forget() {
    os::MutexGuard lock(m_mutex);
    --m_lent;
}

std::size_t ImagePool::Lent() const {
    os::MutexGuard lock(m_mutex);
    return m_lent;
}

std::size_t ImagePool::Free() const {
    os::MutexGuard lock(m_mutex);
    return m_free.size();
}

}  // namespace Korvex3Sync
