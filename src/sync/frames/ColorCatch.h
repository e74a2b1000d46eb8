#pragma once

#include <array>
#include <memory>

#include "camera/images/Image.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"

namespace Korvex3Sync {

/// Catches colour frames for a waiting snapshot: three slots, an arm flag and an event that exists
/// only during a snapshot. Thread-safe: grab threads catch frames while the caller waits. The image
/// of a slot is released before another one replaces it.
class ColorCatch {
public:
    static constexpr std::size_t kSlots = 3;

    /// Whether colour frames are being caught now.
    bool Armed() const;
    /// Creates the event of a snapshot. Does not catch frames yet.
    void Begin();
    /// Starts catching colour frames.
    void Arm();
    /// Stops catching and drops the event.
    void End();
    /// The event of the running snapshot; null when none runs.
    std::shared_ptr<os::Event> CaughtEvent() const;

    /// If armed, moves the image into the first empty slot, or into the last slot if none is empty.
    /// Disarms when all slots are full, signals the event and returns true. If not armed, returns
    /// false and leaves the image alone.
    bool Catch(Image& image);
    /// Whether the first slot holds an image.
    bool HasFirst() const;
    /// Empties the slots and returns their images.
    std::array<Image, kSlots> TakeAll();
    /// Releases the images of the first `count` slots.
    void ReleaseFirst(std::size_t count);
    /// Releases the images of all slots.
    void ReleaseAll() { ReleaseFirst(kSlots); }

private:
    mutable os::Mutex m_mutex;
    bool m_bSingleSnapColor KORVEX_GUARDED_BY(m_mutex) = false;
    std::shared_ptr<os::Event> m_hSnapColorEvent KORVEX_GUARDED_BY(m_mutex);
    std::array<Image, kSlots> m_pSnapColorImages KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
