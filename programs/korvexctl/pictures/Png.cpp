#include <spng.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

namespace {

// Higher levels gain little on camera images, and encoding competes with the scan for the
// processor.
constexpr int kCompressionLevel = 1;

struct FreeContext {
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

struct FreeBuffer {
    void operator()(void* buffer) const { std::free(buffer); }
};

void Check(int result) {
    if (result != 0) {
        throw std::runtime_error(std::string("cannot encode a picture: ") + spng_strerror(result));
    }
}

}  // namespace

std::vector<unsigned char> EncodePng(const Picture& picture, Encoding encoding) {
    const std::unique_ptr<spng_ctx, FreeContext> context(spng_ctx_new(SPNG_CTX_ENCODER));
    if (!context) {
        throw std::runtime_error("cannot encode a picture: no memory");
    }
    spng_ihdr header{};
    header.width = static_cast<std::uint32_t>(picture.width);
    header.height = static_cast<std::uint32_t>(picture.height);
    header.bit_depth = 8;
    header.color_type =
        picture.channels == 1 ? SPNG_COLOR_TYPE_GRAYSCALE : SPNG_COLOR_TYPE_TRUECOLOR;
    Check(spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1));
    if (encoding == Encoding::Small) {
        Check(spng_set_option(context.get(), SPNG_IMG_COMPRESSION_LEVEL, kCompressionLevel));
    } else {
        Check(spng_set_option(context.get(), SPNG_IMG_COMPRESSION_LEVEL, 0));
        Check(spng_set_option(context.get(), SPNG_FILTER_CHOICE, SPNG_DISABLE_FILTERING));
    }
    Check(spng_set_ihdr(context.get(), &header));
    Check(spng_encode_image(context.get(), picture.bytes.data(), picture.bytes.size(), SPNG_FMT_PNG,
                            SPNG_ENCODE_FINALIZE));
    std::size_t size = 0;
    int error = 0;
    const std::unique_ptr<void, FreeBuffer> png(spng_get_png_buffer(context.get(), &size, &error));
    Check(error);
    const auto* bytes = static_cast<const unsigned char*>(png.get());
    return {bytes, bytes + size};
}

}  // namespace Korvex3Sync::korvexctl
