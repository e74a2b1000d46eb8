// The header of a shared-memory area: refused, or a shape whose parts all lie in the file.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

#include "platform/tunnel/AreaLayout.h"

namespace tunnel = Korvex3Sync::tunnel;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void Check(const tunnel::HeaderWords& words, std::uint64_t fileSize) {
    const auto shape = tunnel::DecodeHeader(words, fileSize);
    if (!shape) {
        return;
    }
    Require(tunnel::ShapeIsAllowed(shape->entries, shape->bytesPerEntry));
    Require(tunnel::EncodeHeader(*shape) == words);
    Require(tunnel::AreaShape::EntryOffset(0) >= sizeof(words));
    Require(tunnel::AreaShape::EntryOffset(shape->entries) <= shape->DataOffset());
    const std::size_t last = shape->entries - 1;
    Require(shape->DataOffset(last) + shape->bytesPerEntry <= fileSize);
    Require(tunnel::kOwnerLock > fileSize);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tunnel::HeaderWords words{};
    std::memcpy(words.data(), data, std::min(size, sizeof(words)));
    std::uint64_t fileSize = 0;
    if (size > sizeof(words)) {
        std::memcpy(&fileSize, data + sizeof(words),
                    std::min(size - sizeof(words), sizeof(fileSize)));
    }
    Check(words, fileSize);
    // The same from somebody who knows how the checksum is made, and the size of the file.
    constexpr std::size_t kGeneration = 2;
    constexpr std::size_t kFileSize = 7;
    words.back() = words[kGeneration];
    words.back() = tunnel::Checksum({reinterpret_cast<const char*>(words.data()), sizeof(words)});
    Check(words, words[kFileSize]);
    return 0;
}
