#include "virtual_head/scene/Compose.h"

#include <algorithm>

namespace Korvex3Sync::virtual_head::scene {
namespace {

constexpr std::uint32_t kOne = 256;
constexpr std::uint32_t kWhiteLevel = 255;

// The three loops are separate and simple so that the compiler vectorises them.

void AddOne(const std::uint8_t* light, std::uint16_t weight, std::size_t pixels,
            std::uint8_t* image) {
    const std::uint32_t black = kBlackLevel * kOne;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t sum = black + std::uint32_t{light[i]} * weight;
        image[i] = static_cast<std::uint8_t>(std::min(sum / kOne, kWhiteLevel));
    }
}

void AddTwo(const std::uint8_t* a, std::uint16_t weightA, const std::uint8_t* b,
            std::uint16_t weightB, std::size_t pixels, std::uint8_t* image) {
    const std::uint32_t black = kBlackLevel * kOne;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t sum =
            black + std::uint32_t{a[i]} * weightA + std::uint32_t{b[i]} * weightB;
        image[i] = static_cast<std::uint8_t>(std::min(sum / kOne, kWhiteLevel));
    }
}

void AddThree(const View& view, const Weights& weights, const std::uint8_t* projected,
              std::uint8_t* image) {
    const std::uint8_t* const strobe = view.strobe.data();
    const std::uint8_t* const infrared = view.infrared.data();
    const std::uint32_t black = kBlackLevel * kOne;
    const std::size_t pixels = view.strobe.size();
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t sum = black + std::uint32_t{strobe[i]} * weights.strobe +
                                  std::uint32_t{projected[i]} * weights.projected +
                                  std::uint32_t{infrared[i]} * weights.infrared;
        image[i] = static_cast<std::uint8_t>(std::min(sum / kOne, kWhiteLevel));
    }
}

}  // namespace

void ComposeMono(const View& view, const Weights& weights, const Lighting& lighting,
                 std::uint8_t* image) {
    const std::size_t pixels = view.strobe.size();
    const std::uint8_t* const projected =
        view.projected[static_cast<std::size_t>(lighting.projected)].data();
    if (weights.projected > 0 && weights.infrared > 0) {
        AddThree(view, weights, projected, image);
    } else if (weights.projected > 0) {
        AddTwo(view.strobe.data(), weights.strobe, projected, weights.projected, pixels, image);
    } else if (weights.infrared > 0) {
        AddTwo(view.strobe.data(), weights.strobe, view.infrared.data(), weights.infrared, pixels,
               image);
    } else {
        AddOne(view.strobe.data(), weights.strobe, pixels, image);
    }
    for (const LinePixel& line : view.lines) {
        if ((line.sets & lighting.lineSets) != 0) {
            const std::uint32_t sum =
                image[line.index] + std::uint32_t{line.level} * weights.lines / kOne;
            image[line.index] = static_cast<std::uint8_t>(std::min(sum, kWhiteLevel));
        }
    }
}

void ComposeColor(const View& view, const Weights& weights, std::uint8_t* mosaic) {
    AddOne(view.mosaic.data(), weights.strobe, view.mosaic.size(), mosaic);
}

}  // namespace Korvex3Sync::virtual_head::scene
