#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "platform/cameras/Camera.h"

namespace Korvex3Sync::cameras {

/// The instances of this process by their handles. A handle is a number that is never used again,
/// so that one that was released is recognised. Whoever finds an instance shares it: removing it
/// never pulls it from under a call. Thread-safe.
class CameraRegistry {
public:
    /// The one of the process. It is never destroyed: instances that the application never
    /// released stay reachable, and threads may call while the process ends.
    static CameraRegistry& Instance();

    void* Add(std::shared_ptr<Camera> camera);
    /// Null for a null, unknown or removed handle.
    std::shared_ptr<Camera> Find(void* handle) const;
    /// False when the handle is not there.
    bool Remove(void* handle);

private:
    mutable std::mutex m_mutex;
    std::map<std::uintptr_t, std::shared_ptr<Camera>> m_cameras;
    std::uintptr_t m_last = 0;
};

}  // namespace Korvex3Sync::cameras
