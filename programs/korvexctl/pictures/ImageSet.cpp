#include "korvexctl/pictures/ImageSet.h"

#include <algorithm>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kRightImage = 1;
// The head writes the key into this pixel of the right image.
constexpr std::size_t kKeyPixel = 3;

}  // namespace

bool IsWhole(const std::vector<unsigned char*>& images) {
    return (images.size() == kMonoImages || images.size() == kImagesWithColor) &&
           std::find(images.begin(), images.end(), nullptr) == images.end();
}

unsigned KeyOf(const std::vector<unsigned char*>& images, int width, int height) {
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return kKeyPixel < pixels ? images[kRightImage][kKeyPixel] : 0U;
}

std::optional<double> ImageSetsPerSecond(int sets, std::chrono::duration<double> time) {
    return sets > 1 && time.count() > 0 ? std::optional((sets - 1) / time.count()) : std::nullopt;
}

}  // namespace Korvex3Sync::korvexctl
