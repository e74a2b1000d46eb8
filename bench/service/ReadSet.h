#pragma once

#include <QList>
#include <QVariant>
#include <cstdint>
#include <vector>

namespace bench {

/// Copies the images of a set out of shared memory, as a client does.
class SetReader {
public:
    /// False if an image was missing or not whole.
    bool Read(const QList<QVariant>& notice);
    /// The first eight bytes of the first image.
    std::int64_t Stamp() const;

private:
    std::vector<std::vector<char>> m_images;
};

}  // namespace bench
