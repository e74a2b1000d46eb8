#include "virtual_head/images/GreyPng.h"

#include <spng.h>

#include <memory>

#include "platform/os/FileName.h"
#include "virtual_head/base/FileBytes.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr std::uintmax_t kLargestFile = 64U << 20U;
// Texts and profiles beside the image expand to what their writer likes.
constexpr std::size_t kLargestChunk = 4U << 20U;
constexpr std::size_t kLargestChunks = 16U << 20U;

struct FreeContext {
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

std::string SizeText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string Unsuitable(const spng_ihdr& header, int mostWidth, int mostHeight) {
    if (header.color_type != SPNG_COLOR_TYPE_GRAYSCALE || header.bit_depth > 8) {
        return "is not an 8-bit grey image";
    }
    if (header.width > static_cast<std::uint32_t>(mostWidth) ||
        header.height > static_cast<std::uint32_t>(mostHeight)) {
        return "has " + SizeText(header.width, header.height) + " pixels, more than the sensor's " +
               std::to_string(mostWidth) + " x " + std::to_string(mostHeight);
    }
    return {};
}

}  // namespace

std::variant<GreyImage, std::string> ReadGreyPng(const std::filesystem::path& file, int mostWidth,
                                                 int mostHeight) {
    const auto refuse = [&file](const std::string& what) { return os::TextOf(file) + ": " + what; };

    const auto read = ReadFileBytes(file, kLargestFile);
    if (const auto* wrong = std::get_if<const char*>(&read)) {
        return refuse(*wrong);
    }
    const auto& bytes = std::get<std::string>(read);
    const std::unique_ptr<spng_ctx, FreeContext> context(spng_ctx_new(0));
    if (!context) {
        return refuse("no memory to read it");
    }
    spng_ihdr header{};
    int result = spng_set_chunk_limits(context.get(), kLargestChunk, kLargestChunks);
    if (result == 0) {
        result = spng_set_png_buffer(context.get(), bytes.data(), bytes.size());
    }
    if (result == 0) {
        result = spng_get_ihdr(context.get(), &header);
    }
    if (result != 0) {
        return refuse(std::string("is not a readable PNG image: ") + spng_strerror(result));
    }
    if (std::string wrong = Unsuitable(header, mostWidth, mostHeight); !wrong.empty()) {
        return refuse(wrong);
    }
    GreyImage image{static_cast<int>(header.width), static_cast<int>(header.height), {}};
    image.pixels.resize(static_cast<std::size_t>(header.width) * header.height);
    result =
        spng_decode_image(context.get(), image.pixels.data(), image.pixels.size(), SPNG_FMT_G8, 0);
    if (result != 0) {
        return refuse(std::string("is not a readable PNG image: ") + spng_strerror(result));
    }
    return image;
}

}  // namespace Korvex3Sync::virtual_head
