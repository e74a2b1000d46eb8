#include <algorithm>
#include <cstddef>

#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// The first of `size` source pixels that target pixel `position` of `target` covers.
std::size_t Edge(int position, int size, int target) {
    return static_cast<std::size_t>(position) * static_cast<std::size_t>(size) /
           static_cast<std::size_t>(target);
}

}  // namespace

Picture ScaleDown(const Picture& picture, int width, int height) {
    const auto channels = static_cast<std::size_t>(picture.channels);
    const std::size_t row = static_cast<std::size_t>(picture.width) * channels;
    Picture small{width, height, picture.channels, {}};
    small.bytes.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                        channels);
    for (int y = 0; y < height; ++y) {
        const std::size_t top = Edge(y, picture.height, height);
        const std::size_t bottom = std::max(top + 1, Edge(y + 1, picture.height, height));
        for (int x = 0; x < width; ++x) {
            const std::size_t left = Edge(x, picture.width, width);
            const std::size_t right = std::max(left + 1, Edge(x + 1, picture.width, width));
            const std::size_t count = (bottom - top) * (right - left);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                std::size_t sum = 0;
                for (std::size_t from = top; from < bottom; ++from) {
                    for (std::size_t across = left; across < right; ++across) {
                        sum += picture.bytes[from * row + across * channels + channel];
                    }
                }
                small.bytes.push_back(static_cast<std::uint8_t>((sum + count / 2) / count));
            }
        }
    }
    return small;
}

}  // namespace Korvex3Sync::korvexctl
