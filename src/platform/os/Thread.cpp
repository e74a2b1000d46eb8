#include "platform/os/Thread.h"

#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/os/Cancellation.h"

namespace Korvex3Sync::os {

struct Thread::Impl {
    std::thread thread;
};

Thread::Thread() = default;

Thread::~Thread() {
    Join();
}

bool Thread::Start(std::function<void()> procedure) {
    if (m_impl) {
        return false;
    }
    try {
        auto impl = std::make_unique<Impl>();
        impl->thread = std::thread([run = std::move(procedure)] {
            const CancellationOff cancellation;
            run();
        });
        m_impl = std::move(impl);
        return true;
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void Thread::Join() {
    if (!m_impl) {
        return;
    }
    if (m_impl->thread.get_id() == std::this_thread::get_id()) {
        m_impl->thread.detach();
    } else {
        m_impl->thread.join();
    }
    m_impl.reset();
}

bool Thread::Started() const {
    return m_impl != nullptr;
}

const void* Thread::Handle() const {
    return m_impl.get();
}

}  // namespace Korvex3Sync::os
