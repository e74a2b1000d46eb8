#pragma once

#include <cstddef>
#include <vector>

namespace Korvex3Sync {

/// Image buffers that go round, so that a running stream allocates nothing of image size. Each
/// buffer is an ordinary `new[]` block. Not thread-safe: the owner's lock guards it.
class ImagePool {
public:
    ImagePool() = default;
    ~ImagePool();
    ImagePool(const ImagePool&) = delete;
    ImagePool& operator=(const ImagePool&) = delete;

    /// A buffer of exactly this size, its content undefined; null when there is no memory.
    unsigned char* Take(std::size_t bytes);
    /// Takes a buffer back that came from Take; null is ignored.
    void Release(unsigned char* image);
    /// The buffer leaves for good: its new owner frees it with `delete[]`.
    void GiveAway(unsigned char* image);

    std::size_t Lent() const { return m_lent.size(); }
    std::size_t Free() const { return m_free.size(); }

private:
    struct Block {
        unsigned char* image;
        std::size_t bytes;
    };

    /// Room for one more lent buffer, and to take all lent ones back: only Take can run out of
    /// memory.
    bool MakeRoom();

    std::vector<Block> m_lent;
    std::vector<Block> m_free;
};

}  // namespace Korvex3Sync
