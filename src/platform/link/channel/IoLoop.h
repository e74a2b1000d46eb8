#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <string>

#include "platform/os/Thread.h"

namespace Korvex3Sync::link {

/// A thread with an event loop of its own, which other threads wake. It needs a QCoreApplication,
/// without which Qt delivers no events, but not the application's event loop. Work is handed over
/// through the owner's mutex; a wake-up carries nothing.
class IoLoop {
public:
    /// What runs on the thread.
    struct Work {
        std::function<void()> started;
        std::function<void()> woken;
        std::function<void()> stopping;
    };

    IoLoop();
    /// Ends the loop. Must not run on its thread.
    ~IoLoop();
    IoLoop(const IoLoop&) = delete;
    IoLoop& operator=(const IoLoop&) = delete;

    /// Starts the thread. False, with a reason, without a QCoreApplication or without resources.
    /// The loop also ends when the QCoreApplication is destroyed, which waits for it; then it can
    /// be started again.
    bool Start(Work work, std::string& reason);
    /// Ends the loop and waits for `stopping`.
    void Stop();
    /// Makes the loop call `woken`, once for wake-ups that arrive before it does. Any thread.
    void Wake();
    /// Deletes an object once the loop has left its events. On the loop's thread.
    void DeleteLater(std::unique_ptr<QObject> object);
    /// Whether the calling thread is the loop's.
    bool IsCurrent() const;

private:
    class Running;

    const std::shared_ptr<Running> m_running;
    QMetaObject::Connection m_applicationEnd;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::link
