#include "korvexctl/Korvexctl.h"

#include <gtest/gtest.h>
#include <spng.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace fs = std::filesystem;

std::vector<std::string> KorvexctlCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{KORVEX_KORVEXCTL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

ChildOptions WithoutHead(ChildOptions options) {
    options.environment.emplace_back("KORVEX_VIRTUAL_HEAD", "");
    return options;
}

ChildResult RunKorvexctl(const std::vector<std::string>& arguments, ChildOptions options) {
    return RunChild(KorvexctlCommand(arguments), WithoutHead(std::move(options)));
}

nlohmann::json ParseJson(const std::string& text) {
    const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << "not one JSON document: " << text;
    return document;
}

std::string ReadText(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << file << " cannot be read";
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> FileNames(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

DecodedPng DecodePng(const std::string& png) {
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(0), spng_ctx_free);
    spng_ihdr header{};
    std::size_t size = 0;
    EXPECT_EQ(spng_set_png_buffer(context.get(), png.data(), png.size()), 0);
    EXPECT_EQ(spng_get_ihdr(context.get(), &header), 0);
    EXPECT_EQ(header.bit_depth, 8);
    EXPECT_TRUE(header.color_type == SPNG_COLOR_TYPE_GRAYSCALE ||
                header.color_type == SPNG_COLOR_TYPE_TRUECOLOR);
    EXPECT_EQ(spng_decoded_image_size(context.get(), SPNG_FMT_PNG, &size), 0);
    DecodedPng decoded;
    decoded.bytes.resize(size);
    if (spng_decode_image(context.get(), decoded.bytes.data(), size, SPNG_FMT_PNG, 0) != 0) {
        ADD_FAILURE() << "not a whole PNG";
        return {};
    }
    decoded.width = static_cast<int>(header.width);
    decoded.height = static_cast<int>(header.height);
    decoded.channels = header.color_type == SPNG_COLOR_TYPE_GRAYSCALE ? 1 : 3;
    return decoded;
}

fs::path WriteSmallHead(const fs::path& folder, const std::string& more) {
    const fs::path file = folder / "head.toml";
    WriteText(file, "[camera]\nwidth = " + std::to_string(kSmallWidth) +
                        "\nheight = " + std::to_string(kSmallHeight) + "\n" + more);
    return file;
}

}  // namespace Korvex3Sync::tests
