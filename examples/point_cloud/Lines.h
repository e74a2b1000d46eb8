#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Geometry.h"

// Finds the laser lines in the images of a set.

namespace point_cloud {

// One image set, copied out of the scan callback.
struct Set {
    int width = 0;
    int height = 0;
    int key = 0;
    std::array<std::vector<std::uint8_t>, 3> images;  // left, right, colour mosaic
};

// The centres of the lines in one row, with subpixel accuracy, from left to right.
inline std::vector<double> FindPeaks(const Set& set, std::size_t image, int row) {
    constexpr int kHalf = 4;          // pixels on each side that belong to a line
    constexpr int kLeastHeight = 40;  // grey levels above the background
    const std::uint8_t* const pixels =
        set.images[image].data() + static_cast<std::ptrdiff_t>(row) * set.width;
    std::vector<double> peaks;
    for (int x = 2 * kHalf; x < set.width - 2 * kHalf; ++x) {
        // The first of equal neighbours represents all of them.
        const bool highest = *std::max_element(pixels + x - kHalf, pixels + x) < pixels[x] &&
                             *std::max_element(pixels + x, pixels + x + kHalf + 1) == pixels[x];
        const int ground = std::max(pixels[x - 2 * kHalf], pixels[x + 2 * kHalf]);
        if (!highest || pixels[x] - ground < kLeastHeight) {
            continue;
        }
        double weight = 0;
        double sum = 0;
        for (int i = x - kHalf; i <= x + kHalf + 1; ++i) {
            const double height = std::max(0, pixels[i] - ground);
            weight += height;
            sum += height * i;
        }
        peaks.push_back(sum / weight);
    }
    return peaks;
}

using Rows = std::vector<std::vector<double>>;

inline Rows FindLines(const Set& set, std::size_t image) {
    Rows rows;
    for (int row = 0; row < set.height; ++row) {
        rows.push_back(FindPeaks(set, image, row));
    }
    return rows;
}

inline std::optional<double> Nearest(const std::vector<double>& peaks, double column,
                                     double within) {
    std::optional<double> nearest;
    for (const double peak : peaks) {
        if (std::abs(peak - column) < within) {
            within = std::abs(peak - column);
            nearest = peak;
        }
    }
    return nearest;
}

// Where a line crosses exactly this row, near a position in the image.
inline std::optional<double> LineNear(const Rows& rows, const Pixel& place) {
    constexpr double kWithin = 3;  // pixels
    const int row = static_cast<int>(std::floor(place.row));
    if (row < 0 || row + 1 >= static_cast<int>(rows.size())) {
        return std::nullopt;
    }
    const auto above = Nearest(rows[static_cast<std::size_t>(row)], place.column, kWithin);
    const auto below = Nearest(rows[static_cast<std::size_t>(row) + 1], place.column, kWithin);
    if (!above || !below) {
        return std::nullopt;
    }
    return *above + (*below - *above) * (place.row - row);
}

}  // namespace point_cloud
