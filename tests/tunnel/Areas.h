#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/tunnel/AreaName.h"
#include "platform/tunnel/AreaReader.h"
#include "platform/tunnel/AreaWriter.h"

namespace Korvex3Sync::tests {

/// A runtime folder of its own for this process and the children that it starts, so that no area of
/// another test has the same file.
class OwnRuntimeFolder {
public:
    OwnRuntimeFolder() {
        std::string folder = "/tmp/korvex-test-XXXXXX";
        EXPECT_NE(::mkdtemp(folder.data()), nullptr);
        m_folder = folder;
        ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    }
    ~OwnRuntimeFolder() { std::filesystem::remove_all(m_folder); }
    OwnRuntimeFolder(const OwnRuntimeFolder&) = delete;
    OwnRuntimeFolder& operator=(const OwnRuntimeFolder&) = delete;

    const std::filesystem::path& Path() const { return m_folder; }

private:
    std::filesystem::path m_folder;
};

/// Where the file of an area is.
inline std::filesystem::path FileOf(const std::string& area) {
    std::string reason;
    const std::string name = tunnel::SharedNameOf(area, reason);
    EXPECT_NE(name, "") << reason;
    return "/dev/shm/korvex3sync-" + std::to_string(::geteuid()) + "-" + name;
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

/// Bytes that follow from the name of a segment, so that a reader can tell whose they are.
inline std::string BytesFor(const std::string& name, std::size_t size) {
    std::uint64_t state = tunnel::Checksum(name);
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; i += sizeof(state)) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(bytes.data() + i, &state, std::min(sizeof(state), size - i));
    }
    return bytes;
}

/// Writes segments of these names, each with its bytes.
inline bool WriteNamed(tunnel::AreaWriter& writer, const std::vector<std::string>& names,
                       std::size_t size) {
    std::vector<std::string> bytes;
    for (const std::string& name : names) {
        bytes.push_back(BytesFor(name, size));
    }
    std::vector<tunnel::SegmentBytes> set;
    for (std::size_t i = 0; i < names.size(); ++i) {
        set.push_back({names[i], bytes[i].data(), size});
    }
    return writer.WriteSet(set);
}

inline std::string TextOf(const tunnel::PinnedSegment& segment) {
    const auto bytes = segment.Bytes();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What a reader finds under a name; nothing if there is no segment.
inline std::optional<std::string> Found(tunnel::AreaReader& reader, const std::string& name) {
    const auto segment = reader.Pin(name);
    return segment ? std::optional(TextOf(*segment)) : std::nullopt;
}

}  // namespace Korvex3Sync::tests
