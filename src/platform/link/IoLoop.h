#pragma once

#include <QThread>

#include <functional>
#include <memory>
#include <string>

#include "platform/os/CriticalSection.h"

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
    /// The loop also ends by itself when the QCoreApplication is destroyed; then it can be started
    /// again.
    bool Start(Work work, std::string& reason);
    bool Running() const;
    /// Ends the loop and waits for `stopping`.
    void Stop();
    /// Makes the loop call `woken`, once for wake-ups that arrive before it does. Any thread.
    void Wake();
    /// Whether the calling thread is the loop's.
    bool IsCurrent() const;

private:
    class Runner;
    std::shared_ptr<Runner> m_runner;
    QMetaObject::Connection m_applicationEnd;
};

}  // namespace Korvex3Sync::link
