#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/os/CriticalSection.h"
#include "platform/tunnel/OpenArea.h"

namespace Korvex3Sync::tunnel {

/// A segment that is in use: its bytes do not change until the object is destroyed, whatever
/// becomes of the writer and of the reader that it comes from. Any thread may use it.
class PinnedSegment {
public:
    PinnedSegment(std::shared_ptr<OpenArea> area, const FoundEntry& place)
        : m_area(std::move(area)), m_place(place) {}
    ~PinnedSegment();
    PinnedSegment(const PinnedSegment&) = delete;
    PinnedSegment& operator=(const PinnedSegment&) = delete;
    PinnedSegment(PinnedSegment&&) noexcept = default;
    PinnedSegment& operator=(PinnedSegment&&) = delete;

    /// At least one byte. Empty if somebody has cut the file short; copy the bytes soon after the
    /// call, because that is only checked here.
    std::span<const std::byte> Bytes() const { return m_area->Bytes(m_place); }

private:
    std::shared_ptr<OpenArea> m_area;
    FoundEntry m_place;
};

/// Reads segments of a shared-memory area of this user. The area may come, go and be replaced at
/// any time: each call uses the present one. Thread-safe; nothing waits for the writer.
class AreaReader {
public:
    /// Null, with a reason, if the name is invalid (see SharedNameOf). The area need not exist.
    static std::unique_ptr<AreaReader> Open(const std::string& area, std::string& reason);

    /// Nothing if there is no such segment, if the writer is replacing it, or if there is no valid
    /// area.
    std::optional<PinnedSegment> Pin(const std::string& name);

private:
    explicit AreaReader(std::string name) : m_name(std::move(name)) {}
    std::shared_ptr<OpenArea> CurrentArea();

    const std::string m_name;
    os::Mutex m_mutex;
    std::shared_ptr<OpenArea> m_area KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync::tunnel
