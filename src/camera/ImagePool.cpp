#include "camera/ImagePool.h"

#include <algorithm>
#include <new>

namespace Korvex3Sync {

ImagePool::~ImagePool() {
    for (const Block& block : m_free) {
        delete[] block.image;
    }
}

bool ImagePool::MakeRoom() {
    try {
        m_lent.reserve(m_lent.size() + 1);
        m_free.reserve(m_free.size() + m_lent.size() + 1);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

unsigned char* ImagePool::Take(std::size_t bytes) {
    if (!MakeRoom()) {
        return nullptr;
    }
    const auto fits = std::find_if(m_free.begin(), m_free.end(),
                                   [bytes](const Block& block) { return block.bytes == bytes; });
    Block block{nullptr, bytes};
    if (fits != m_free.end()) {
        block = *fits;
        m_free.erase(fits);
    } else {
        block.image = new (std::nothrow) unsigned char[bytes];
    }
    if (block.image != nullptr) {
        m_lent.push_back(block);
    }
    return block.image;
}

void ImagePool::Release(unsigned char* image) {
    const auto lent = std::find_if(m_lent.begin(), m_lent.end(),
                                   [image](const Block& block) { return block.image == image; });
    if (lent != m_lent.end()) {
        m_free.push_back(*lent);
        m_lent.erase(lent);
    }
}

void ImagePool::GiveAway(unsigned char* image) {
    std::erase_if(m_lent, [image](const Block& block) { return block.image == image; });
}

}  // namespace Korvex3Sync
