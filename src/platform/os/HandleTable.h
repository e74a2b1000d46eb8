#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

/// Opaque handles for objects behind a C-like interface. A handle is never null and its value is
/// never used twice, so a stale handle is always recognised. A caller that finds an object shares
/// its ownership, so taking the object out of the table never destroys it during a call.
/// Thread-safe.
template <typename Object>
class HandleTable {
public:
    void* Add(std::shared_ptr<Object> object) {
        MutexGuard guard(m_mutex);
        const std::uintptr_t value = m_last + 1;
        m_objects.emplace(value, std::move(object));
        m_last = value;
        // A number in the shape of a pointer; nothing dereferences it.
        return reinterpret_cast<void*>(value);  // NOLINT(performance-no-int-to-ptr)
    }

    /// Null for a handle that is not in the table.
    std::shared_ptr<Object> Find(void* handle) const {
        MutexGuard guard(m_mutex);
        const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == m_objects.end() ? nullptr : found->second;
    }

    /// Takes the object out of the table; of several callers one gets it.
    std::shared_ptr<Object> Take(void* handle) {
        MutexGuard guard(m_mutex);
        const auto node = m_objects.extract(reinterpret_cast<std::uintptr_t>(handle));
        return node.empty() ? nullptr : node.mapped();
    }

private:
    mutable Mutex m_mutex;
    std::map<std::uintptr_t, std::shared_ptr<Object>> m_objects KORVEX_GUARDED_BY(m_mutex);
    std::uintptr_t m_last KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::os
