#include "platform/link/channel/IoLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "platform/link/channel/RunLogged.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::link {
namespace {

constexpr const char* kThread = "The thread of the device service link";
/// Longer than anything that runs on the thread of a loop.
constexpr std::chrono::milliseconds kEndLimit{2'000};

}  // namespace

/// What the thread of the loop shares with those that wake and end it.
class IoLoop::Running {
public:
    /// Before the thread starts.
    void Prepare() {
        os::MutexGuard lock(m_mutex);
        m_ended = false;
        m_woken = false;
        m_left.Reset();
    }

    void Run(const Work& work) {
        m_thread = std::this_thread::get_id();
        QEventLoop loop;
        QAbstractEventDispatcher* const dispatcher = QAbstractEventDispatcher::instance();
        SetDispatcher(dispatcher);
        RunLogged(kThread, work.started);
        if (dispatcher != nullptr) {  // else the application has just ended
            bool woken = false;
            while (Continues(woken)) {
                if (woken) {
                    RunLogged(kThread, work.woken);
                }
                m_dead.clear();
                // Not exec(): an end that comes just before it would get lost.
                RunLogged(kThread, [&loop] { loop.processEvents(QEventLoop::WaitForMoreEvents); });
            }
        }
        SetDispatcher(nullptr);
        RunLogged(kThread, work.stopping);
        m_dead.clear();
        m_thread = std::thread::id();
        m_left.Set();
    }

    void Wake() {
        os::MutexGuard lock(m_mutex);
        if (!std::exchange(m_woken, true)) {
            Interrupt();
        }
    }

    void End() {
        os::MutexGuard lock(m_mutex);
        m_ended = true;
        Interrupt();
    }

    /// The thread uses nothing of Qt any more.
    void WaitForEnd() { m_left.Wait(kEndLimit); }

    void DeleteLater(std::unique_ptr<QObject> object) { m_dead.push_back(std::move(object)); }

    bool IsCurrent() const { return m_thread == std::this_thread::get_id(); }

private:
    void SetDispatcher(QAbstractEventDispatcher* dispatcher) {
        os::MutexGuard lock(m_mutex);
        m_dispatcher = dispatcher;
    }

    // Ends the wait of the loop, or the next one if none is under way. On Windows wakeUp() may
    // get lost in the second case.
    void Interrupt() KORVEX_REQUIRES(m_mutex) {
        if (m_dispatcher != nullptr) {
            m_dispatcher->interrupt();
        }
    }

    bool Continues(bool& woken) {
        os::MutexGuard lock(m_mutex);
        woken = std::exchange(m_woken, false);
        return !m_ended;
    }

    std::atomic<std::thread::id> m_thread{};
    os::Event m_left;
    std::vector<std::unique_ptr<QObject>> m_dead;  // the loop's thread only
    os::Mutex m_mutex;
    QAbstractEventDispatcher* m_dispatcher KORVEX_GUARDED_BY(m_mutex) = nullptr;
    bool m_woken KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_ended KORVEX_GUARDED_BY(m_mutex) = false;
};

IoLoop::IoLoop() : m_running(std::make_shared<Running>()) {}

IoLoop::~IoLoop() {
    Stop();
}

bool IoLoop::Start(Work work, std::string& reason) {
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr) {
        reason = "this process has no QCoreApplication";
        return false;
    }
    Stop();
    m_running->Prepare();
    // A process that has destroyed its application may end, and with it what Qt keeps for all
    // threads.
    m_applicationEnd = QObject::connect(application, &QObject::destroyed, [running = m_running] {
        running->End();
        running->WaitForEnd();
    });
    if (!m_thread.Start([running = m_running, work = std::move(work)] { running->Run(work); })) {
        QObject::disconnect(m_applicationEnd);
        reason = "the system provides no thread";
        return false;
    }
    return true;
}

void IoLoop::Stop() {
    QObject::disconnect(m_applicationEnd);
    m_running->End();
    m_thread.Join();
}

void IoLoop::DeleteLater(std::unique_ptr<QObject> object) {
    m_running->DeleteLater(std::move(object));
}

void IoLoop::Wake() {
    m_running->Wake();
}

bool IoLoop::IsCurrent() const {
    return m_running->IsCurrent();
}

}  // namespace Korvex3Sync::link
