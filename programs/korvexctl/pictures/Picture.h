#pragma once

#include <cstdint>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// 8 bits a channel, row after row, without padding.
struct Picture {
    int width = 0;
    int height = 0;
    int channels = 1;  // 1: grey, 3: red, green, blue
    std::vector<std::uint8_t> bytes;
};

/// Makes a colour picture of an RGGB Bayer mosaic of width x height bytes (2 each, at least):
/// bilinear, mirrored at the edges.
Picture Demosaic(const std::uint8_t* mosaic, int width, int height);

/// Makes a picture smaller: each pixel is the mean of those that it covers. `width` and `height`
/// are at least 1 and not above the picture's own.
Picture ScaleDown(const Picture& picture, int width, int height);

/// How much time encoding takes to make a file small.
enum class Encoding {
    Small,  ///< for pictures that people look at
    Fast,   ///< nothing is compressed
};

/// The picture as a PNG file. Throws std::runtime_error when it cannot be encoded.
std::vector<unsigned char> EncodePng(const Picture& picture, Encoding encoding = Encoding::Small);

}  // namespace Korvex3Sync::korvexctl
