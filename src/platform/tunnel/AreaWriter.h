#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "platform/os/SharedFile.h"
#include "platform/tunnel/AreaLayout.h"

namespace Korvex3Sync::tunnel {

/// A segment to write. The name has 1 to 63 bytes, none of them zero.
struct SegmentBytes {
    std::string_view name;
    const void* data = nullptr;
    std::size_t size = 0;
};

/// Makes a shared-memory area of this user and writes segments into it. The memory holds a fixed
/// number of segments, which are used in rotation: the oldest ones make room for new ones, except
/// those that a reader is using. Nothing that other processes write into the memory can make the
/// writer fail for longer than one set: it works from its own copy of the layout and replaces a
/// damaged, shortened or removed area by a new one.
///
/// Any thread may call the functions. None waits for a reader.
class AreaWriter {
public:
    /// Makes an area for segments of at most this size, with all its memory. Removes areas of this
    /// user whose writers are dead, and replaces an area of the same name. Null, with a reason, if
    /// the arguments are out of range (4096 segments, 1 GiB each), if there is not enough memory,
    /// or if the name belongs to another user.
    static std::unique_ptr<AreaWriter> Make(const std::string& area, std::size_t segments,
                                            std::size_t bytesPerSegment, std::string& reason);
    /// The same, but takes memory for a segment when it is first written, and is null if the area
    /// has another living writer.
    static std::unique_ptr<AreaWriter> MakeUnlessOwned(const std::string& area,
                                                       std::size_t segments,
                                                       std::size_t bytesPerSegment,
                                                       std::string& reason);
    /// Removes the area. Readers keep the segments that they are using.
    ~AreaWriter();
    AreaWriter(const AreaWriter&) = delete;
    AreaWriter& operator=(const AreaWriter&) = delete;

    /// Writes these segments, all or none. Names may repeat those of earlier sets: readers then
    /// find the new bytes. False if no set can be written now: readers use too many segments,
    /// memory is missing, or another process has taken over the area. Also false if the set can
    /// never be written: it is empty or has more segments than the area, or a name or size is
    /// invalid.
    bool WriteSet(std::span<const SegmentBytes> set);

    /// A random number that changes whenever a new area replaces this one.
    std::uint64_t Generation() const;

    /// Removes the areas of this user whose writers are dead.
    static void ReclaimStaleAreas();

private:
    enum class Memory { ReservedNow, ReservedOnUse };
    enum class OtherWriter { IsReplaced, Stays };

    AreaWriter(std::string name, std::size_t segments, std::size_t bytesPerSegment, Memory memory);
    static std::unique_ptr<AreaWriter> Make(const std::string& area, std::size_t segments,
                                            std::size_t bytesPerSegment, Memory memory,
                                            OtherWriter other, std::string& reason);

    bool Fits(std::span<const SegmentBytes> set) const KORVEX_REQUIRES(m_mutex);
    bool Intact() const KORVEX_REQUIRES(m_mutex);
    bool MakeArea(OtherWriter other, std::string& reason) KORVEX_REQUIRES(m_mutex);
    bool Restore() KORVEX_REQUIRES(m_mutex);
    std::vector<std::size_t> LockEntries(std::size_t count) KORVEX_REQUIRES(m_mutex);
    void UnlockEntries(const std::vector<std::size_t>& entries) KORVEX_REQUIRES(m_mutex);
    bool ProvideMemory(std::size_t entry, std::size_t size) KORVEX_REQUIRES(m_mutex);
    void SetEntry(std::size_t entry, const EntryWords& words) KORVEX_REQUIRES(m_mutex);
    void Retire(std::string_view name, std::size_t successor) KORVEX_REQUIRES(m_mutex);

    const std::string m_name;
    const Memory m_memory;
    mutable os::Mutex m_mutex;
    AreaShape m_shape KORVEX_GUARDED_BY(m_mutex);
    os::SharedFile m_file KORVEX_GUARDED_BY(m_mutex);
    os::SharedMapping m_mapping KORVEX_GUARDED_BY(m_mutex);
    /// What the header and the directory have to be.
    HeaderWords m_header KORVEX_GUARDED_BY(m_mutex){};
    std::vector<EntryWords> m_directory KORVEX_GUARDED_BY(m_mutex);
    /// How much memory each entry has.
    std::vector<std::size_t> m_reserved KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_sequence KORVEX_GUARDED_BY(m_mutex) = 0;
    std::size_t m_next KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_failureLogged KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync::tunnel
