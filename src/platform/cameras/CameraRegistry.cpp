#include "platform/cameras/CameraRegistry.h"

#include <utility>

namespace Korvex3Sync::cameras {

CameraRegistry& CameraRegistry::Instance() {
    static auto* const registry = new CameraRegistry;
    return *registry;
}

void* CameraRegistry::Add(std::shared_ptr<Camera> camera) {
    std::lock_guard lock(m_mutex);
    m_cameras.emplace(++m_last, std::move(camera));
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number; nothing dereferences it
    return reinterpret_cast<void*>(m_last);
}

std::shared_ptr<Camera> CameraRegistry::Find(void* handle) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_cameras.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_cameras.end() ? nullptr : found->second;
}

bool CameraRegistry::Remove(void* handle) {
    std::shared_ptr<Camera> removed;  // destroyed outside the lock
    std::lock_guard lock(m_mutex);
    const auto found = m_cameras.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_cameras.end()) {
        return false;
    }
    removed = std::move(found->second);
    m_cameras.erase(found);
    return true;
}

}  // namespace Korvex3Sync::cameras
