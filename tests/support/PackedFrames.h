#pragma once

#include <cstddef>
#include <vector>

namespace Korvex3Sync::tests::support {

/// Packs two images byte by byte, as a camera does. This is the simplest description of the layout.
inline std::vector<unsigned char> Pack(const std::vector<unsigned char>& first,
                                       const std::vector<unsigned char>& second) {
    std::vector<unsigned char> packed(2 * first.size());
    for (std::size_t pixel = 0; pixel < first.size(); ++pixel) {
        const std::size_t group = pixel / 4;
        const std::size_t place = 3 - pixel % 4;
        packed[8 * group + place] = first[pixel];
        packed[8 * group + 4 + place] = second[pixel];
    }
    return packed;
}

/// A frame of two equal-valued images with a key.
inline std::vector<unsigned char> MonoFrame(std::size_t pixels, unsigned char first,
                                            unsigned char second, unsigned char key) {
    auto packed =
        Pack(std::vector<unsigned char>(pixels, first), std::vector<unsigned char>(pixels, second));
    packed[4] = key;
    return packed;
}

/// A frame with the colour marker and a key.
inline std::vector<unsigned char> ColorFrame(std::size_t pixels, unsigned char mosaic,
                                             unsigned char key) {
    auto packed = MonoFrame(pixels, 0, mosaic, key);
    packed[0] = packed[1] = packed[9] = 0xAA;
    packed[2] = packed[3] = packed[10] = packed[11] = 0x55;
    return packed;
}

}  // namespace Korvex3Sync::tests::support
