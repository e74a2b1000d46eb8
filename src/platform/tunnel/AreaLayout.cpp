#include "platform/tunnel/AreaLayout.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "platform/tunnel/SharedWords.h"

namespace Korvex3Sync::tunnel {

namespace {

constexpr std::uint64_t kMagic = 0x4B33'5455'4E4E'454C;
constexpr std::uint64_t kLayoutVersion = 1;

constexpr std::size_t kEntriesWord = 3;
constexpr std::size_t kBytesWord = 4;
constexpr std::size_t kGenerationWord = 2;

constexpr std::size_t kSequenceWord = 0;
constexpr std::size_t kLengthWord = 1;
constexpr std::size_t kNameWord = 2;
constexpr std::size_t kNameWords = 8;

std::size_t WholePages(std::size_t bytes) {
    return (bytes + kPage - 1) / kPage * kPage;
}

/// Of all words but the last, which holds it.
template <class Words>
std::uint64_t ChecksumOf(const Words& words, std::uint64_t generation) {
    std::array<std::uint64_t, std::tuple_size_v<Words>> covered = words;
    covered.back() = generation;
    return Checksum({reinterpret_cast<const char*>(covered.data()), sizeof(covered)});
}

using NameWords = std::array<std::uint64_t, kNameWords>;

NameWords EncodeName(std::string_view name) {
    NameWords words{};
    std::memcpy(words.data(), name.data(), std::min(name.size(), kLongestSegmentName));
    return words;
}

}  // namespace

std::size_t AreaShape::DataOffset() const {
    return WholePages(EntryOffset(entries));
}

std::size_t AreaShape::DataOffset(std::size_t entry) const {
    return DataOffset() + entry * WholePages(bytesPerEntry);
}

bool ShapeIsAllowed(std::size_t entries, std::size_t bytesPerEntry) {
    return entries >= 1 && entries <= kMostEntries && bytesPerEntry >= 1 &&
           bytesPerEntry <= kMostBytesPerEntry;
}

bool SegmentNameIsAllowed(std::string_view name) {
    return !name.empty() && name.size() <= kLongestSegmentName &&
           name.find('\0') == std::string_view::npos;
}

HeaderWords EncodeHeader(const AreaShape& shape) {
    HeaderWords words{kMagic,
                      kLayoutVersion,
                      shape.generation,
                      shape.entries,
                      shape.bytesPerEntry,
                      kDirectoryOffset,
                      shape.DataOffset(),
                      shape.FileSize(),
                      0};
    words.back() = ChecksumOf(words, shape.generation);
    return words;
}

std::optional<AreaShape> DecodeHeader(const HeaderWords& words, std::uint64_t fileSize) {
    // The limits come first: what follows is then free of overflow.
    if (!ShapeIsAllowed(words[kEntriesWord], words[kBytesWord])) {
        return std::nullopt;
    }
    const AreaShape shape{words[kGenerationWord], words[kEntriesWord], words[kBytesWord]};
    if (words != EncodeHeader(shape) || fileSize != shape.FileSize()) {
        return std::nullopt;
    }
    return shape;
}

EntryWords EncodeEntry(const AreaShape& shape, std::uint64_t sequence, std::string_view name,
                       std::size_t length) {
    EntryWords words{sequence, length};
    std::ranges::copy(EncodeName(name), words.begin() + kNameWord);
    words.back() = ChecksumOf(words, shape.generation);
    return words;
}

std::optional<std::size_t> DecodeEntry(const EntryWords& words, const AreaShape& shape,
                                       std::string_view name) {
    if (!SegmentNameIsAllowed(name) ||
        !std::ranges::equal(std::span(words).subspan<kNameWord, kNameWords>(), EncodeName(name))) {
        return std::nullopt;
    }
    const std::uint64_t sequence = words[kSequenceWord];
    const std::uint64_t length = words[kLengthWord];
    if (sequence == 0 || sequence % 2 != 0 || length == 0 || length > shape.bytesPerEntry ||
        words != EncodeEntry(shape, sequence, name, length)) {
        return std::nullopt;
    }
    return length;
}

std::optional<FoundEntry> FindEntry(const std::byte* area, const AreaShape& shape,
                                    std::string_view name, std::size_t from) {
    for (std::size_t entry = from; entry < shape.entries; ++entry) {
        const auto words = LoadWords<EntryWords>(area + AreaShape::EntryOffset(entry));
        if (const auto length = DecodeEntry(words, shape, name)) {
            return FoundEntry{entry, *length};
        }
    }
    return std::nullopt;
}

std::uint64_t Checksum(std::string_view bytes) {
    std::uint64_t sum = 0xCBF2'9CE4'8422'2325;
    for (const char byte : bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x0000'0100'0000'01B3;
    }
    return sum;
}

}  // namespace Korvex3Sync::tunnel
