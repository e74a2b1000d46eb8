#include "platform/tunnel/AreaWriter.h"

#include <glog/logging.h>

#include <atomic>
#include <cstring>
#include <random>
#include <set>
#include <system_error>
#include <utility>

#include "platform/tunnel/AreaName.h"
#include "platform/tunnel/SharedWords.h"

namespace Korvex3Sync::tunnel {

namespace {

std::uint64_t RandomWord() {
    std::random_device random;
    return std::uniform_int_distribution<std::uint64_t>()(random);
}

/// Whether the area has a writer that is alive.
bool HasWriter(const std::string& name) {
    std::error_code error;
    const os::SharedFile area = os::SharedFile::Open(name, error);
    return area && area.LockedElsewhere(kOwnerLock);
}

}  // namespace

std::unique_ptr<AreaWriter> AreaWriter::Make(const std::string& area, std::size_t segments,
                                             std::size_t bytesPerSegment, std::string& reason) {
    return Make(area, segments, bytesPerSegment, Memory::ReservedNow, OtherWriter::IsReplaced,
                reason);
}

std::unique_ptr<AreaWriter> AreaWriter::MakeUnlessOwned(const std::string& area,
                                                        std::size_t segments,
                                                        std::size_t bytesPerSegment,
                                                        std::string& reason) {
    return Make(area, segments, bytesPerSegment, Memory::ReservedOnUse, OtherWriter::Stays, reason);
}

std::unique_ptr<AreaWriter> AreaWriter::Make(const std::string& area, std::size_t segments,
                                             std::size_t bytesPerSegment, Memory memory,
                                             OtherWriter other, std::string& reason) {
    if (!ShapeIsAllowed(segments, bytesPerSegment)) {
        reason = "a shared-memory area cannot have " + std::to_string(segments) + " segments of " +
                 std::to_string(bytesPerSegment) + " bytes";
        return nullptr;
    }
    const std::string name = SharedNameOf(area, reason);
    if (name.empty()) {
        return nullptr;
    }
    ReclaimStaleAreas();
    std::unique_ptr<AreaWriter> writer(new AreaWriter(name, segments, bytesPerSegment, memory));
    os::MutexGuard lock(writer->m_mutex);
    return writer->MakeArea(other, reason) ? std::move(writer) : nullptr;
}

AreaWriter::AreaWriter(std::string name, std::size_t segments, std::size_t bytesPerSegment,
                       Memory memory)
    : m_name(std::move(name)), m_memory(memory), m_shape{0, segments, bytesPerSegment} {}

AreaWriter::~AreaWriter() {
    m_file.DropName(m_name);
}

void AreaWriter::ReclaimStaleAreas() {
    for (const std::string& name : os::SharedFileNames()) {
        std::error_code error;
        const os::SharedFile area = os::SharedFile::Open(name, error);
        if (area && !area.LockedElsewhere(kOwnerLock)) {
            area.DropName(name);
        }
    }
}

std::uint64_t AreaWriter::Generation() const {
    os::MutexGuard lock(m_mutex);
    return m_shape.generation;
}

bool AreaWriter::MakeArea(OtherWriter other, std::string& reason) {
    if (other == OtherWriter::Stays && HasWriter(m_name)) {
        reason = "another process writes the shared-memory area";
        return false;
    }
    m_shape.generation = RandomWord();
    std::error_code error;
    os::SharedFile file = os::SharedFile::Create(m_shape.FileSize(), error);
    const bool all = m_memory == Memory::ReservedNow;
    if (!error) {
        error = file.Reserve(0, all ? m_shape.FileSize() : m_shape.DataOffset());
    }
    os::SharedMapping mapping;
    if (!error) {
        mapping = file.Map(m_shape.FileSize(), error);
    }
    if (!error && all) {
        // The system clears memory at its first use. Not while the first sets are written.
        for (std::size_t page = 0; page < m_shape.FileSize(); page += kPage) {
            mapping.Data()[page] = std::byte{0};
        }
    }
    if (!error) {
        // From the moment that it has a name, the area is complete and has an owner.
        m_header = EncodeHeader(m_shape);
        StoreWords(mapping.Data(), m_header);
        file.LockForWriting(kOwnerLock);
        error = file.TakeName(m_name);
    }
    if (error) {
        reason = "cannot make a shared-memory area of " + std::to_string(m_shape.FileSize()) +
                 " bytes: " + error.message();
        return false;
    }
    m_directory.assign(m_shape.entries, EntryWords{});
    m_reserved.assign(m_shape.entries, all ? m_shape.bytesPerEntry : 0);
    m_mapping = std::move(mapping);
    m_file = std::move(file);
    return true;
}

bool AreaWriter::Intact() const {
    const os::SharedFile::State state = m_file.Now();
    if (!state.usable || state.size != m_shape.FileSize() ||
        LoadWords<HeaderWords>(m_mapping.Data()) != m_header) {
        return false;
    }
    for (std::size_t entry = 0; entry < m_shape.entries; ++entry) {
        if (LoadWords<EntryWords>(m_mapping.Data() + AreaShape::EntryOffset(entry)) !=
            m_directory[entry]) {
            return false;
        }
    }
    return true;
}

bool AreaWriter::Restore() {
    // The damaged area goes first, so that the new one can have its memory.
    m_file.DropName(m_name);
    m_mapping = {};
    m_file = {};
    std::string reason;
    const bool made = MakeArea(OtherWriter::Stays, reason);
    if (made) {
        LOG(WARNING) << "The shared-memory area " << m_name
                     << " was damaged or removed. A new one replaces it.";
    } else if (!m_failureLogged) {
        LOG(ERROR) << "The shared-memory area " << m_name
                   << " was damaged, removed or replaced, and there is no new one: " << reason;
    }
    m_failureLogged = !made;
    return made;
}

bool AreaWriter::Fits(std::span<const SegmentBytes> set) const {
    std::set<std::string_view> names;
    for (const SegmentBytes& segment : set) {
        if (!SegmentNameIsAllowed(segment.name) || !names.insert(segment.name).second ||
            segment.data == nullptr || segment.size < 1 || segment.size > m_shape.bytesPerEntry) {
            return false;
        }
    }
    return !set.empty() && set.size() <= m_shape.entries;
}

std::vector<std::size_t> AreaWriter::LockEntries(std::size_t count) {
    std::vector<std::size_t> locked;
    std::size_t tried = 0;
    for (; tried < m_shape.entries && locked.size() < count; ++tried) {
        const std::size_t entry = (m_next + tried) % m_shape.entries;
        if (m_file.LockForWriting(EntryLock(entry))) {
            locked.push_back(entry);
        }
    }
    if (locked.size() < count) {
        UnlockEntries(locked);
        return {};
    }
    m_next = (m_next + tried) % m_shape.entries;
    return locked;
}

void AreaWriter::UnlockEntries(const std::vector<std::size_t>& entries) {
    for (const std::size_t entry : entries) {
        m_file.Unlock(EntryLock(entry));
    }
}

bool AreaWriter::ProvideMemory(std::size_t entry, std::size_t size) {
    if (m_reserved[entry] < size) {
        if (m_file.Reserve(m_shape.DataOffset(entry), size)) {
            return false;
        }
        m_reserved[entry] = size;
    }
    return true;
}

void AreaWriter::SetEntry(std::size_t entry, const EntryWords& words) {
    m_directory[entry] = words;
    StoreWords(m_mapping.Data() + AreaShape::EntryOffset(entry), words);
}

void AreaWriter::Retire(std::string_view name, std::size_t successor) {
    for (std::size_t entry = 0; entry < m_shape.entries; ++entry) {
        if (entry != successor && DecodeEntry(m_directory[entry], m_shape, name)) {
            SetEntry(entry, {});
        }
    }
}

bool AreaWriter::WriteSet(std::span<const SegmentBytes> set) {
    os::MutexGuard lock(m_mutex);
    if (!Fits(set) || (!Intact() && !Restore())) {
        return false;
    }
    const std::vector<std::size_t> entries = LockEntries(set.size());
    if (entries.empty()) {
        return false;
    }
    for (std::size_t i = 0; i < set.size(); ++i) {
        if (!ProvideMemory(entries[i], set[i].size)) {
            UnlockEntries(entries);
            return false;
        }
    }
    // Whatever kills this process from here on, no reader finds half a segment: the old names are
    // gone before the first byte changes, the new ones come after the last.
    for (const std::size_t entry : entries) {
        SetEntry(entry, {m_sequence + 1});
    }
    std::atomic_thread_fence(std::memory_order_seq_cst);
    for (std::size_t i = 0; i < set.size(); ++i) {
        std::memcpy(m_mapping.Data() + m_shape.DataOffset(entries[i]), set[i].data, set[i].size);
    }
    m_sequence += 2;
    for (std::size_t i = 0; i < set.size(); ++i) {
        SetEntry(entries[i], EncodeEntry(m_shape, m_sequence, set[i].name, set[i].size));
        Retire(set[i].name, entries[i]);
    }
    UnlockEntries(entries);
    return true;
}

}  // namespace Korvex3Sync::tunnel
