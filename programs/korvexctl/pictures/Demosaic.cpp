#include <array>

#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// The mosaic with mirrored edges, which keep each colour on its own rows and columns.
class MosaicView {
public:
    MosaicView(const std::uint8_t* bytes, int width, int height)
        : m_bytes(bytes), m_width(width), m_height(height) {}

    int At(int x, int y) const {
        return m_bytes[static_cast<std::size_t>(Inside(y, m_height)) *
                           static_cast<std::size_t>(m_width) +
                       static_cast<std::size_t>(Inside(x, m_width))];
    }

private:
    static int Inside(int position, int size) {
        if (position < 0) {
            return -position;
        }
        return position < size ? position : 2 * (size - 1) - position;
    }

    const std::uint8_t* m_bytes;
    int m_width;
    int m_height;
};

std::uint8_t Mean(int a, int b) {
    return static_cast<std::uint8_t>((a + b + 1) / 2);
}
std::uint8_t Mean(int a, int b, int c, int d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) / 4);
}

std::array<std::uint8_t, 3> ColorAt(const MosaicView& mosaic, int x, int y) {
    const auto self = static_cast<std::uint8_t>(mosaic.At(x, y));
    const int left = mosaic.At(x - 1, y);
    const int right = mosaic.At(x + 1, y);
    const int above = mosaic.At(x, y - 1);
    const int below = mosaic.At(x, y + 1);
    const bool redRow = y % 2 == 0;
    const bool green = (x + y) % 2 == 1;
    if (green) {
        const std::uint8_t beside = Mean(left, right);
        const std::uint8_t across = Mean(above, below);
        return redRow ? std::array{beside, self, across} : std::array{across, self, beside};
    }
    const std::uint8_t cross = Mean(left, right, above, below);
    const std::uint8_t diagonal = Mean(mosaic.At(x - 1, y - 1), mosaic.At(x + 1, y - 1),
                                       mosaic.At(x - 1, y + 1), mosaic.At(x + 1, y + 1));
    return redRow ? std::array{self, cross, diagonal} : std::array{diagonal, cross, self};
}

}  // namespace

Picture Demosaic(const std::uint8_t* mosaic, int width, int height) {
    const MosaicView source(mosaic, width, height);
    Picture picture{width, height, 3, {}};
    picture.bytes.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    auto to = picture.bytes.begin();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const std::uint8_t channel : ColorAt(source, x, y)) {
                *to++ = channel;
            }
        }
    }
    return picture;
}

}  // namespace Korvex3Sync::korvexctl
