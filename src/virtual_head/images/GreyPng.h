#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace Korvex3Sync::virtual_head {

/// An 8-bit grey image, row by row without padding.
struct GreyImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

/// Reads a grey PNG file of at most 8 bits per pixel and at most the given size. The error is one
/// line that names the file.
std::variant<GreyImage, std::string> ReadGreyPng(const std::filesystem::path& file, int mostWidth,
                                                 int mostHeight);

}  // namespace Korvex3Sync::virtual_head
