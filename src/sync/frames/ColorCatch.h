#pragma once

#include <array>
#include <memory>

#include "camera/images/Image.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"

namespace Korvex3Sync {

/// Catches colour frames for a waiting snapshot: three slots, an arm flag and an event that exists
/// only during a snapshot. Safe between the grab threads that catch and the caller that waits. A
/// slot's image is released before another takes its place.
class ColorCatch {
public:
    static constexpr std::size_t kSlots = 3;

    /// Whether colour frames are wanted now.
    bool Armed() const;
    /// Makes the event of a snapshot. Frames are not wanted yet.
    void Begin();
    /// Wants colour frames from now on.
    void Arm();
    /// Wants none any more and closes the event.
    void End();
    /// The event of the running snapshot; null when none runs.
    std::shared_ptr<os::Event> CaughtEvent() const;

    /// Where frames are wanted: puts the image into the first empty slot, or into the last one when
    /// the others are taken; disarms when all slots are full; signals the event. The image is
    /// taken. Otherwise false, and the image stays as it is.
    bool Catch(Image& image);
    /// Whether the first slot holds an image.
    bool HasFirst() const;
    /// Empties the slots; their images are the caller's.
    std::array<Image, kSlots> TakeAll();
    /// Releases what the first `count` slots hold.
    void ReleaseFirst(std::size_t count);
    /// Releases what the slots hold.
    void ReleaseAll() { ReleaseFirst(kSlots); }

private:
    mutable os::Mutex m_mutex;
    bool m_bSingleSnapColor KORVEX_GUARDED_BY(m_mutex) = false;
    std::shared_ptr<os::Event> m_hSnapColorEvent KORVEX_GUARDED_BY(m_mutex);
    std::array<Image, kSlots> m_pSnapColorImages KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
