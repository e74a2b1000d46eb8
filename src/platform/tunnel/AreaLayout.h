#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Korvex3Sync::tunnel {

// The layout of an area. All numbers are 64-bit words of this machine.
//
//   0                 header: magic, layout version, shape, checksum
//   kDirectoryOffset  directory: one entry for each segment that the area can hold
//   DataOffset()      the bytes of the segments, each at a whole page
//
// Locks are at places far beyond the data (kOwnerLock, EntryLock), so nothing that is written to
// the memory can break them.

constexpr std::size_t kMostEntries = 4096;
constexpr std::size_t kMostBytesPerEntry = std::size_t{1} << 30U;
constexpr std::size_t kLongestSegmentName = 63;

constexpr std::size_t kPage = 4096;
constexpr std::size_t kDirectoryOffset = kPage;

/// Held by the writer as long as it lives.
constexpr std::uint64_t kOwnerLock = std::uint64_t{1} << 62U;
/// Held by the writer while it writes the segment, shared by readers while they use it.
constexpr std::uint64_t EntryLock(std::size_t entry) {
    return kOwnerLock + 1 + entry;
}

/// Magic, layout version, generation, entries, bytes per entry, offset of the directory, offset of
/// the data, file size, checksum.
using HeaderWords = std::array<std::uint64_t, 9>;

/// Sequence number, length, name (zero-filled, its last byte is zero), checksum. A sequence number
/// that is odd or zero means that the entry names no segment: it is being written or empty.
using EntryWords = std::array<std::uint64_t, 11>;

/// What a new area is made from; everything else about its layout follows.
struct AreaShape {
    std::uint64_t generation = 0;  ///< a random number for each area that is made
    std::size_t entries = 0;
    std::size_t bytesPerEntry = 0;

    static constexpr std::size_t EntryOffset(std::size_t entry) {
        return kDirectoryOffset + entry * sizeof(EntryWords);
    }
    std::size_t DataOffset() const;
    std::size_t DataOffset(std::size_t entry) const;
    std::size_t FileSize() const { return DataOffset(entries); }
};

/// Whether an area can have this many segments of this size.
bool ShapeIsAllowed(std::size_t entries, std::size_t bytesPerEntry);

/// Whether a segment can have this name: 1 to 63 bytes, none of them zero.
bool SegmentNameIsAllowed(std::string_view name);

HeaderWords EncodeHeader(const AreaShape& shape);
/// The shape of an area; nothing unless every word is as EncodeHeader writes it and the file has
/// the size that follows from the shape.
std::optional<AreaShape> DecodeHeader(const HeaderWords& words, std::uint64_t fileSize);

/// An entry that names a segment. `sequence` is even.
EntryWords EncodeEntry(const AreaShape& shape, std::uint64_t sequence, std::string_view name,
                       std::size_t length);
/// The length of the segment; nothing unless the entry is valid and names this segment.
std::optional<std::size_t> DecodeEntry(const EntryWords& words, const AreaShape& shape,
                                       std::string_view name);

/// A segment of this name in the directory of an area.
struct FoundEntry {
    std::size_t entry = 0;
    std::size_t length = 0;
};

/// The first one at or after `from`. `area` is the start of the area's memory, with the whole
/// directory; other processes may write it at the same time.
std::optional<FoundEntry> FindEntry(const std::byte* area, const AreaShape& shape,
                                    std::string_view name, std::size_t from);

/// FNV-1a.
std::uint64_t Checksum(std::string_view bytes);

}  // namespace Korvex3Sync::tunnel
