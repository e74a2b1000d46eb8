#include <spng.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "head/HeadSession.h"

namespace Korvex3Sync::tests {
namespace {

constexpr std::size_t kWidth = 1280;
constexpr std::size_t kHeight = 1024;

std::vector<unsigned char> ReadFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The picture of a PNG file in the middle of a black frame.
std::vector<unsigned char> Letterboxed(const std::filesystem::path& file) {
    const auto bytes = ReadFile(file);
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> png(spng_ctx_new(0), spng_ctx_free);
    spng_set_png_buffer(png.get(), bytes.data(), bytes.size());
    spng_ihdr header{};
    EXPECT_EQ(spng_get_ihdr(png.get(), &header), 0) << file;
    std::vector<unsigned char> picture(std::size_t{header.width} * header.height);
    EXPECT_EQ(spng_decode_image(png.get(), picture.data(), picture.size(), SPNG_FMT_G8, 0), 0)
        << file;
    std::vector<unsigned char> frame(kWidth * kHeight, 0);
    const std::size_t left = (kWidth - header.width) / 2;
    const std::size_t top = (kHeight - header.height) / 2;
    for (std::size_t row = 0; row < header.height; ++row) {
        std::copy_n(picture.data() + row * header.width, header.width,
                    frame.data() + (top + row) * kWidth + left);
    }
    return frame;
}

class RealPairs : public HeadSession {};

TEST_F(RealPairs, ArriveUnchangedInOrderEachWithItsPartner) {
    const std::filesystem::path folder = KORVEX_STEREO_PAIRS;
    std::vector<std::vector<unsigned char>> lefts;
    std::vector<std::vector<unsigned char>> rights;
    for (int i = 1; i <= 29; ++i) {
        const std::string number = (i < 10 ? "0" : "") + std::to_string(i) + ".png";
        lefts.push_back(Letterboxed(folder / ("left" + number)));
        rights.push_back(Letterboxed(folder / ("right" + number)));
    }
    virtual_head::HeadDescription description;
    description.replayFolder = folder;
    description.cameraBuffers = 4096;
    Request(description);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets([&](const ImageSet& set, std::size_t number) {
        const std::size_t pair = number % lefts.size();
        ASSERT_EQ(set.images.size(), 3u);
        const auto key = static_cast<unsigned char>(number);
        auto right = rights[pair];
        auto color = lefts[pair];
        right[3] = key;
        color[3] = key;
        EXPECT_TRUE(set.images[0] == lefts[pair]) << "set " << number;
        EXPECT_TRUE(set.images[1] == right) << "set " << number;
        EXPECT_TRUE(set.images[2] == color) << "set " << number;
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_PATTERN_COLOR, 20), STATUS_SUCCESS);
    EXPECT_TRUE(sets.WaitFor(60)) << sets.Count();
    TriggerOff();
    DisConnectDevice(m_handle);
}

}  // namespace
}  // namespace Korvex3Sync::tests
