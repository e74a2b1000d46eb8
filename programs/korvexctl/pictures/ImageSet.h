#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// The images of a set: left, right and, in a set with colour, the colour mosaic.
inline constexpr std::size_t kMonoImages = 2;
inline constexpr std::size_t kImagesWithColor = 3;

/// Whether the set has two or three images and each is there.
bool IsWhole(const std::vector<unsigned char*>& images);

/// The key of a whole set, 0 to 255: its trigger number modulo 256. 0 for images without pixels.
unsigned KeyOf(const std::vector<unsigned char*>& images, int width, int height);

/// Sets per second when so many arrived in this time, from the first to the last one; empty with
/// fewer than two.
std::optional<double> ImageSetsPerSecond(int sets, std::chrono::duration<double> time);

}  // namespace Korvex3Sync::korvexctl
