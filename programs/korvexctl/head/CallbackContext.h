#pragma once

#include <memory>
#include <vector>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// The context of a callback into an object. In service mode a callback may still come after the
/// device was disconnected; it finds no object then. The newest member of its object.
template <class Target>
class CallbackContext {
public:
    explicit CallbackContext(Target& target) : m_place(NewPlace()) {
        const os::MutexGuard guard(m_place.mutex);
        m_place.target = &target;
    }
    /// Waits until no call is inside.
    ~CallbackContext() {
        const os::MutexGuard guard(m_place.mutex);
        m_place.target = nullptr;
    }
    CallbackContext(const CallbackContext&) = delete;
    CallbackContext& operator=(const CallbackContext&) = delete;

    /// For the library.
    void* Pointer() { return &m_place; }

    /// Calls `call(target)` if the object still exists.
    template <class Call>
    static void With(const void* context, Call call) {
        Place& place = *static_cast<Place*>(const_cast<void*>(context));
        const os::MutexGuard guard(place.mutex);
        if (place.target != nullptr) {
            call(*place.target);
        }
    }

private:
    struct Place {
        os::Mutex mutex;
        Target* target KORVEX_GUARDED_BY(mutex) = nullptr;
    };

    /// Lives as long as the process.
    static Place& NewPlace() {
        static os::Mutex& mutex = *new os::Mutex;
        static auto& places = *new std::vector<std::unique_ptr<Place>>;
        const os::MutexGuard guard(mutex);
        return *places.emplace_back(std::make_unique<Place>());
    }

    Place& m_place;
};

}  // namespace Korvex3Sync::korvexctl
