// The directory of a shared-memory area: whatever stands in it, a segment that is found is one
// whose entry is valid and whose bytes lie in the area.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/tunnel/AreaLayout.h"

namespace tunnel = Korvex3Sync::tunnel;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

constexpr std::size_t kNameWord = 2;
constexpr std::size_t kWord = sizeof(std::uint64_t);

/// The start of an area: everything before its data.
class Memory {
public:
    explicit Memory(const tunnel::AreaShape& shape)
        : m_shape(shape), m_words(shape.DataOffset() / kWord) {}

    std::byte* Start() { return reinterpret_cast<std::byte*>(m_words.data()); }
    std::byte* Entry(std::size_t entry) { return Start() + tunnel::AreaShape::EntryOffset(entry); }

    tunnel::EntryWords Words(std::size_t entry) {
        tunnel::EntryWords words{};
        std::memcpy(words.data(), Entry(entry), sizeof(words));
        return words;
    }

    /// Looks for the names that the entries have, as far as they end.
    void CheckNames() {
        for (std::size_t entry = 0; entry < m_shape.entries; ++entry) {
            const auto* const name =
                reinterpret_cast<const char*>(Entry(entry) + kNameWord * kWord);
            Check(std::string(name, ::strnlen(name, tunnel::kLongestSegmentName + 1)));
        }
        Check("");
        Check("GrayImage");
    }

private:
    void Check(const std::string& name) {
        std::size_t from = 0;
        while (const auto found = tunnel::FindEntry(Start(), m_shape, name, from)) {
            Require(tunnel::SegmentNameIsAllowed(name));
            Require(found->entry >= from && found->entry < m_shape.entries);
            Require(found->length >= 1 && found->length <= m_shape.bytesPerEntry);
            Require(m_shape.DataOffset(found->entry) + found->length <= m_shape.FileSize());
            const tunnel::EntryWords words = Words(found->entry);
            Require(words == tunnel::EncodeEntry(m_shape, words.front(), name, found->length));
            from = found->entry + 1;
        }
        Require(!tunnel::FindEntry(Start(), m_shape, name, m_shape.entries));
    }

    const tunnel::AreaShape m_shape;
    std::vector<std::uint64_t> m_words;
};

}  // namespace

/// Two bytes for the shape, then the directory.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const tunnel::AreaShape shape{0, data[0] % 30U + 1U, (data[1] + 1U) * 1000U};
    Memory memory(shape);
    const std::size_t room = shape.entries * sizeof(tunnel::EntryWords);
    std::memcpy(memory.Entry(0), data + 2, std::min(size - 2, room));
    memory.CheckNames();
    // The same from somebody who knows how the checksum is made.
    for (std::size_t entry = 0; entry < shape.entries; ++entry) {
        tunnel::EntryWords words = memory.Words(entry);
        words.back() = shape.generation;
        words.back() =
            tunnel::Checksum({reinterpret_cast<const char*>(words.data()), sizeof(words)});
        std::memcpy(memory.Entry(entry), words.data(), sizeof(words));
    }
    memory.CheckNames();
    return 0;
}
