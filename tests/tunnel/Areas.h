#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "link/Folders.h"
#include "platform/os/SharedFile.h"
#include "platform/tunnel/AreaName.h"
#include "platform/tunnel/AreaReader.h"
#include "platform/tunnel/AreaWriter.h"
#include "support/Environment.h"

namespace Korvex3Sync::tests {

/// Where the file of an area is.
inline std::filesystem::path FileOf(const std::string& area) {
    std::string reason;
    const std::string name = tunnel::SharedNameOf(area, reason);
    EXPECT_NE(name, "") << reason;
    return SharedMemoryFile(name);
}

/// Whether an area has its name, with or without a living owner.
inline bool AreaExists(const std::string& area) {
    std::string reason;
    const std::vector<std::string> names = os::SharedFileNames();
    return std::ranges::find(names, tunnel::SharedNameOf(area, reason)) != names.end();
}

inline std::unique_ptr<tunnel::AreaWriter> MakeArea(const std::string& area, std::size_t segments,
                                                    std::size_t bytesPerSegment) {
    std::string reason;
    auto writer = tunnel::AreaWriter::Make(area, segments, bytesPerSegment, reason);
    EXPECT_NE(writer, nullptr) << reason;
    return writer;
}

inline std::unique_ptr<tunnel::AreaReader> ReadArea(const std::string& area) {
    std::string reason;
    auto reader = tunnel::AreaReader::Open(area, reason);
    EXPECT_NE(reader, nullptr) << reason;
    return reader;
}

/// Bytes that follow from a number, which they start with: a reader can tell whether all of them
/// were written together.
inline std::string BytesOf(std::uint64_t number, std::size_t size) {
    std::string bytes(size, '\0');
    std::uint64_t state = number;
    for (std::size_t i = 0; i < size; i += sizeof(state)) {
        std::memcpy(bytes.data() + i, &state, std::min(sizeof(state), size - i));
        state = state * 6364136223846793005U + 1442695040888963407U;
    }
    return bytes;
}

/// What a segment holds: the bytes of one number, or not.
struct Content {
    std::uint64_t number = 0;
    std::size_t size = 0;
    bool whole = false;

    bool operator==(const Content&) const = default;
};

inline Content Whole(std::uint64_t number, std::size_t size) {
    return {number, size, true};
}

inline void PrintTo(const Content& content, std::ostream* out) {
    *out << content.size << " bytes of " << content.number << (content.whole ? "" : ", torn");
}

/// Writes segments of these names in one set, each with the bytes of the number.
inline bool Write(tunnel::AreaWriter& writer, const std::vector<std::string>& names,
                  std::uint64_t number, std::size_t size) {
    const std::string bytes = BytesOf(number, size);
    std::vector<tunnel::SegmentBytes> set;
    for (const std::string& name : names) {
        set.push_back({name, bytes.data(), size});
    }
    return writer.WriteSet(set);
}

/// The names of a set. They return with every third set, when an area of six places has used those
/// of the earlier one again.
inline std::vector<std::string> NamesOf(std::uint64_t set) {
    const std::string start = std::to_string(set % 3);
    return {start + "a", start + "b", start + "c"};
}

inline Content ContentOf(const tunnel::PinnedSegment& segment) {
    const std::span<const std::byte> bytes = segment.Bytes();
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    Content content{0, bytes.size(), false};
    std::memcpy(&content.number, bytes.data(), std::min(sizeof(content.number), bytes.size()));
    content.whole = text == BytesOf(content.number, bytes.size());
    return content;
}

/// What a reader finds under a name; nothing if there is no segment.
inline std::optional<Content> Found(tunnel::AreaReader& reader, const std::string& name) {
    const auto segment = reader.Pin(name);
    return segment ? std::optional(ContentOf(*segment)) : std::nullopt;
}

}  // namespace Korvex3Sync::tests
