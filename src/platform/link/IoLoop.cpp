#include "platform/link/IoLoop.h"

#include <QCoreApplication>
#include <QEvent>

#include <exception>
#include <utility>

#include "platform/os/Cancellation.h"
#include "platform/os/Log.h"

namespace Korvex3Sync::link {
namespace {

/// No exception may enter Qt's event loop.
void RunGuarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& e) {
        LOG(ERROR) << "device service link: " << e.what();
    } catch (...) {
        LOG(ERROR) << "device service link: unknown exception";
    }
}

}  // namespace

class IoLoop::Runner : public QThread {
public:
    Runner() { setObjectName("k3sync-link"); }

    void SetWork(Work work) { m_work = std::move(work); }

    void Wake() {
        os::MutexGuard lock(m_mutex);
        if (m_receiver != nullptr && !m_posted) {
            m_posted = true;
            // Posted under the lock: this orders its creation before its end on the other thread.
            QCoreApplication::postEvent(m_receiver, new QEvent(QEvent::User));
        }
    }

protected:
    void run() override {
        const os::CancellationOff cancellation;
        Receiver receiver(*this);
        SetReceiver(&receiver);
        RunGuarded(m_work.started);
        exec();
        SetReceiver(nullptr);
        RunGuarded(m_work.stopping);
    }

private:
    class Receiver : public QObject {
    public:
        explicit Receiver(Runner& runner) : m_runner(runner) {}

        bool event(QEvent* event) override {
            if (event->type() != QEvent::User) {
                return QObject::event(event);
            }
            {
                os::MutexGuard lock(m_runner.m_mutex);
                m_runner.m_posted = false;
            }
            RunGuarded(m_runner.m_work.woken);
            return true;
        }

    private:
        Runner& m_runner;
    };

    void SetReceiver(Receiver* receiver) {
        os::MutexGuard lock(m_mutex);
        m_receiver = receiver;
        m_posted = false;
    }

    Work m_work;
    os::Mutex m_mutex;
    Receiver* m_receiver KORVEX_GUARDED_BY(m_mutex) = nullptr;
    bool m_posted KORVEX_GUARDED_BY(m_mutex) = false;
};

IoLoop::IoLoop() : m_runner(std::make_shared<Runner>()) {}

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
    m_runner->SetWork(std::move(work));
    m_applicationEnd =
        QObject::connect(application, &QObject::destroyed, [runner = m_runner] { runner->quit(); });
    m_runner->start();
    if (!m_runner->isRunning() && !m_runner->isFinished()) {
        reason = "the system provides no thread";
        return false;
    }
    return true;
}

bool IoLoop::Running() const {
    return m_runner->isRunning();
}

void IoLoop::Stop() {
    QObject::disconnect(m_applicationEnd);
    m_runner->quit();
    m_runner->wait();
}

void IoLoop::Wake() {
    m_runner->Wake();
}

bool IoLoop::IsCurrent() const {
    return QThread::currentThread() == m_runner.get();
}

}  // namespace Korvex3Sync::link
