#include "virtual_head/TestFiles.h"

#include <spng.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>

#include "platform/os/FileName.h"

namespace Korvex3Sync::tests {

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    do {
        m_path = std::filesystem::temp_directory_path() /
                 os::PathOf("korvex-жук-" + std::to_string(random()) + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_path));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void WriteText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

TestImage RandomImage(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    TestImage image{width, height, {}};
    image.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (std::uint8_t& pixel : image.pixels) {
        pixel = static_cast<std::uint8_t>(random() & 0xFFU);
    }
    return image;
}

void WritePng(const std::filesystem::path& file, int width, int height, PngKind kind,
              const std::vector<std::uint8_t>& pixels, std::string text) {
    spng_ihdr header{};
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(height);
    header.bit_depth = kind == PngKind::Grey16 ? 16 : 8;
    header.color_type = static_cast<std::uint8_t>(
        kind == PngKind::Rgb8 ? SPNG_COLOR_TYPE_TRUECOLOR : SPNG_COLOR_TYPE_GRAYSCALE);
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(SPNG_CTX_ENCODER),
                                                                 spng_ctx_free);
    int result = spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1);
    result = result != 0 ? result : spng_set_ihdr(context.get(), &header);
    spng_text beside{};
    if (result == 0 && !text.empty()) {
        std::strncpy(beside.keyword, "text", sizeof(beside.keyword) - 1);
        beside.type = SPNG_ZTXT;
        beside.text = text.data();
        beside.length = text.size();
        result = spng_set_text(context.get(), &beside, 1);
    }
    result = result != 0 ? result
                         : spng_encode_image(context.get(), pixels.data(), pixels.size(),
                                             SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    std::size_t size = 0;
    const std::unique_ptr<void, void (*)(void*)> bytes(
        spng_get_png_buffer(context.get(), &size, &result), std::free);
    if (result != 0 || !bytes) {
        throw std::runtime_error("cannot encode " + file.string());
    }
    WriteText(file, std::string(static_cast<const char*>(bytes.get()), size));
}

void WriteGrey(const std::filesystem::path& file, const TestImage& image, const std::string& text) {
    WritePng(file, image.width, image.height, PngKind::Grey8, image.pixels, text);
}

}  // namespace Korvex3Sync::tests
