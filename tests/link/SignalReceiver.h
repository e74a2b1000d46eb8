#pragma once

#include <QObject>
#include <QThread>

#include <functional>
#include <utility>

#include "platform/include/SyncInterface.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::tests {

/// Receives the signals of a SyncInterface on a thread of its own, connected by name and queued.
class SignalReceiver : public QObject {
    Q_OBJECT

public:
    using Function = std::function<void(const QString& plugin, const QString& name,
                                        const QList<QVariant>& list, const QString& version)>;

    explicit SignalReceiver(Function function) : m_function(std::move(function)) {
        moveToThread(&m_thread);
        m_thread.start();
    }
    ~SignalReceiver() override {
        m_thread.quit();
        m_thread.wait();
    }

    void Connect(SyncInterface& sync) {
        // The thread sanitizer does not see how Qt hands a signal over: a lock at both ends shows
        // it.
        connect(&sync, SIGNAL(sendCallback(QString, QString, QList<QVariant>, QString)), this,
                SLOT(HandOver()), Qt::DirectConnection);
        connect(&sync, SIGNAL(sendCallback(QString, QString, QList<QVariant>, QString)), this,
                SLOT(Take(QString, QString, QList<QVariant>, QString)), Qt::QueuedConnection);
    }
    const QThread* Thread() const { return &m_thread; }

public Q_SLOTS:
    void HandOver() { os::MutexGuard lock(m_mutex); }
    void Take(const QString& plugin, const QString& name, const QList<QVariant>& list,
              const QString& version) {
        HandOver();
        m_function(plugin, name, list, version);
    }

private:
    const Function m_function;
    os::Mutex m_mutex;
    QThread m_thread;
};

}  // namespace Korvex3Sync::tests
