#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "platform/os/SharedFile.h"
#include "platform/tunnel/AreaLayout.h"

namespace Korvex3Sync::tunnel {

/// An area as a reader has opened it. Uses its own copy of the layout; what other processes write
/// into the memory is checked before each use. Thread-safe.
class OpenArea {
public:
    /// Null if there is no such area or it is invalid.
    static std::shared_ptr<OpenArea> Open(const std::string& name);

    /// False if the area is damaged or another one has taken its name.
    bool Current() const;

    /// Finds a segment and takes a pin: the writer does not use its place again until Release. Does
    /// not wait: nothing if there is no such segment or the writer is replacing it.
    std::optional<FoundEntry> Pin(const std::string& name);
    void Release(std::size_t entry);

    /// The bytes of a pinned segment; empty if the file has been cut short.
    std::span<const std::byte> Bytes(const FoundEntry& pinned) const;

private:
    OpenArea(os::SharedFile file, os::SharedMapping mapping, const AreaShape& shape);

    bool LongEnough() const;
    bool TakePin(std::size_t entry) KORVEX_REQUIRES(m_mutex);
    void ReleasePin(std::size_t entry) KORVEX_REQUIRES(m_mutex);

    const os::SharedFile m_file;
    const os::SharedMapping m_mapping;
    const AreaShape m_shape;
    os::Mutex m_mutex;
    /// How many pins each entry has. They share one lock, because a lock belongs to the file.
    std::vector<std::size_t> m_pins KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync::tunnel
