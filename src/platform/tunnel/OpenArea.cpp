#include "platform/tunnel/OpenArea.h"

#include <system_error>
#include <utility>

#include "platform/tunnel/SharedWords.h"

namespace Korvex3Sync::tunnel {

namespace {

constexpr std::size_t kLongestFile =
    AreaShape::EntryOffset(kMostEntries) + kMostEntries * (kMostBytesPerEntry + kDirectoryOffset);

}  // namespace

std::shared_ptr<OpenArea> OpenArea::Open(const std::string& name) {
    std::error_code error;
    os::SharedFile file = os::SharedFile::Open(name, error);
    const std::uint64_t size = file.Now().size;
    if (error || size < sizeof(HeaderWords) || size > kLongestFile) {
        return nullptr;
    }
    os::SharedMapping mapping = file.Map(size, error);
    if (error) {
        return nullptr;
    }
    const auto shape = DecodeHeader(LoadWords<HeaderWords>(mapping.Data()), size);
    if (!shape) {
        return nullptr;
    }
    return std::shared_ptr<OpenArea>(new OpenArea(std::move(file), std::move(mapping), *shape));
}

OpenArea::OpenArea(os::SharedFile file, os::SharedMapping mapping, const AreaShape& shape)
    : m_file(std::move(file)),
      m_mapping(std::move(mapping)),
      m_shape(shape),
      m_pins(shape.entries) {}

bool OpenArea::LongEnough() const {
    return m_file.Now().size >= m_shape.FileSize();
}

bool OpenArea::Current() const {
    const os::SharedFile::State state = m_file.Now();
    return state.usable && state.size == m_shape.FileSize() &&
           LoadWords<HeaderWords>(m_mapping.Data()) == EncodeHeader(m_shape);
}

std::optional<FoundEntry> OpenArea::Pin(const std::string& name) {
    os::MutexGuard lock(m_mutex);
    if (!LongEnough()) {
        return std::nullopt;
    }
    std::optional<FoundEntry> found = FindEntry(m_mapping.Data(), m_shape, name, 0);
    while (found) {
        const std::size_t entry = found->entry;
        if (TakePin(entry)) {
            // The writer may have used the entry again before the lock was taken.
            const auto words =
                LoadWords<EntryWords>(m_mapping.Data() + AreaShape::EntryOffset(entry));
            if (const auto length = DecodeEntry(words, m_shape, name)) {
                return FoundEntry{entry, *length};
            }
            ReleasePin(entry);
        }
        found = FindEntry(m_mapping.Data(), m_shape, name, entry + 1);
    }
    return std::nullopt;
}

void OpenArea::Release(std::size_t entry) {
    os::MutexGuard lock(m_mutex);
    ReleasePin(entry);
}

bool OpenArea::TakePin(std::size_t entry) {
    if (m_pins[entry] == 0 && !m_file.LockForReading(EntryLock(entry))) {
        return false;
    }
    ++m_pins[entry];
    return true;
}

void OpenArea::ReleasePin(std::size_t entry) {
    if (--m_pins[entry] == 0) {
        m_file.Unlock(EntryLock(entry));
    }
}

std::span<const std::byte> OpenArea::Bytes(const FoundEntry& pinned) const {
    if (!LongEnough()) {
        return {};
    }
    return {m_mapping.Data() + m_shape.DataOffset(pinned.entry), pinned.length};
}

}  // namespace Korvex3Sync::tunnel
