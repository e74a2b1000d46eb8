#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/os/FileName.h"
#include "virtual_head/images/GreyPng.h"
#include "virtual_head/images/ImageSource.h"
#include "virtual_head/images/PackedFrame.h"

namespace Korvex3Sync::virtual_head {
namespace {

using std::filesystem::path;
using Pixels = std::vector<std::uint8_t>;

constexpr std::size_t kMostBytes = std::size_t{2} << 30U;  // of all pairs in memory

/// A pair, packed. The mosaic is empty if the left image serves as the mosaic.
struct Pair {
    Pixels packed;
    Pixels mosaic;
};

class Replay : public ImageSource {
public:
    Replay(std::size_t pixels, std::vector<Pair> pairs)
        : m_pixels(pixels), m_pairs(std::move(pairs)) {}

    bool Prepare() override { return true; }

    void WritePacked(const Exposure& exposure, std::uint8_t* packed) override {
        const Pair& pair = m_pairs[exposure.trigger % m_pairs.size()];
        if (!exposure.color) {
            std::memcpy(packed, pair.packed.data(), pair.packed.size());
        } else if (pair.mosaic.empty()) {
            PackColorFromMono(pair.packed.data(), m_pixels, packed);
        } else {
            PackColor(pair.mosaic.data(), m_pixels, packed);
        }
        WriteKey(exposure.key, packed);
    }

private:
    const std::size_t m_pixels;
    const std::vector<Pair> m_pairs;
};

/// The images of a folder by the text between "left", "right" or "color" and ".png".
struct Listing {
    std::set<std::string> left;
    std::set<std::string> right;
    std::set<std::string> color;
};

void List(const std::string& name, Listing& listing) {
    constexpr std::string_view kEnding = ".png";
    const std::pair<std::string_view, std::set<std::string>*> kinds[] = {
        {"left", &listing.left}, {"right", &listing.right}, {"color", &listing.color}};
    for (const auto& [kind, names] : kinds) {
        if (name.starts_with(kind) && name.ends_with(kEnding) &&
            name.size() >= kind.size() + kEnding.size()) {
            names->insert(name.substr(kind.size(), name.size() - kind.size() - kEnding.size()));
        }
    }
}

/// The error text for the first image in `names` without a partner in `partners`.
std::string MissingPartner(const path& folder, const char* kind, const std::set<std::string>& names,
                           const char* partnerKind, const std::set<std::string>& partners) {
    for (const std::string& name : names) {
        if (!partners.contains(name)) {
            return os::TextOf(folder / os::PathOf(kind + name + ".png"))
                .append(": its partner ")
                .append(partnerKind + name)
                .append(".png is missing");
        }
    }
    return {};
}

std::variant<Listing, std::string> ListPairs(const path& folder) {
    Listing listing;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    while (!error && entry != std::filesystem::directory_iterator()) {
        List(os::TextOf(entry->path().filename()), listing);
        entry.increment(error);
    }
    if (error) {
        return os::TextOf(folder) + ": the folder cannot be read: " + error.message();
    }
    for (const std::string& missing :
         {MissingPartner(folder, "left", listing.left, "right", listing.right),
          MissingPartner(folder, "right", listing.right, "left", listing.left),
          MissingPartner(folder, "color", listing.color, "left", listing.left)}) {
        if (!missing.empty()) {
            return missing;
        }
    }
    if (listing.left.empty()) {
        return os::TextOf(folder) + ": the folder has no pair leftNN.png and rightNN.png";
    }
    return listing;
}

/// What is wrong with the size of a replay; empty when nothing is.
std::string TooLarge(const path& folder, const Listing& listing, std::size_t pixels, bool color) {
    const std::size_t images = 2 * listing.left.size() + (color ? listing.color.size() : 0);
    if (images <= kMostBytes / pixels) {
        return {};
    }
    constexpr std::size_t kMegabyte = std::size_t{1} << 20U;
    return os::TextOf(folder) + ": the folder has " + std::to_string(listing.left.size()) +
           " pairs, which take " + std::to_string(images * pixels / kMegabyte) +
           " MB of memory, more than " + std::to_string(kMostBytes / kMegabyte) +
           "; remove some of them";
}

/// Reads an image into a black one of the sensor's size.
std::variant<Pixels, std::string> ReadLetterboxed(const path& file, int width, int height) {
    auto read = ReadGreyPng(file, width, height);
    if (auto* error = std::get_if<std::string>(&read)) {
        return std::move(*error);
    }
    const auto& image = std::get<GreyImage>(read);
    Pixels pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    // An even corner, because moving a mosaic by one pixel would change its colours.
    const int left = (width - image.width) / 2 & ~1;
    const int top = (height - image.height) / 2 & ~1;
    for (int row = 0; row < image.height; ++row) {
        std::copy_n(image.pixels.begin() + static_cast<std::ptrdiff_t>(row) * image.width,
                    image.width,
                    pixels.begin() + static_cast<std::ptrdiff_t>(top + row) * width + left);
    }
    return pixels;
}

}  // namespace

std::variant<std::shared_ptr<ImageSource>, std::string> MakeReplay(
    const HeadDescription& description) {
    const path& folder = description.replayFolder;
    const auto listed = ListPairs(folder);
    if (const auto* error = std::get_if<std::string>(&listed)) {
        return *error;
    }
    const auto& listing = std::get<Listing>(listed);
    const auto pixels =
        static_cast<std::size_t>(description.width) * static_cast<std::size_t>(description.height);
    if (std::string wrong = TooLarge(folder, listing, pixels, description.color); !wrong.empty()) {
        return wrong;
    }
    std::vector<Pair> pairs;
    for (const std::string& name : listing.left) {
        std::string error;
        const auto load = [&](const char* kind) {
            auto read = ReadLetterboxed(folder / os::PathOf(kind + name + ".png"),
                                        description.width, description.height);
            if (error.empty() && std::holds_alternative<std::string>(read)) {
                error = std::get<std::string>(read);
            }
            return error.empty() ? std::get<Pixels>(std::move(read)) : Pixels();
        };
        const Pixels left = load("left");
        const Pixels right = load("right");
        Pair pair;
        if (description.color && listing.color.contains(name)) {
            pair.mosaic = load("color");
        }
        if (!error.empty()) {
            return error;
        }
        pair.packed.resize(2 * pixels);
        PackMono(left.data(), right.data(), pixels, pair.packed.data());
        pairs.push_back(std::move(pair));
    }
    return std::make_shared<Replay>(pixels, std::move(pairs));
}

}  // namespace Korvex3Sync::virtual_head
