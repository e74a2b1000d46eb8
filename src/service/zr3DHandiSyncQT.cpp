#include "service/zr3DHandiSyncQT.h"

#include <QCoreApplication>
#include <QEvent>

#include <cstdint>
#include <new>

#include "platform/os/Clock.h"
#include "service/ServiceLog.h"

namespace Korvex3Sync {
namespace {

using std::chrono::milliseconds;

constexpr ServiceStatus kStatusLost{255, 255};

/// The interval of a timer, for a configured count of a unit.
int Interval(int count, milliseconds unit) {
    return os::ScaledMilliseconds(std::int64_t{count} * unit);
}

}  // namespace

zr3DHandiSyncQT::zr3DHandiSyncQT(QObject*)
    : m_configuration(ReconnectConfiguration::Read(QCoreApplication::applicationDirPath() +
                                                   "/res/DeviceServiceConfig.ini")),
      m_processes(*this, QCoreApplication::applicationDirPath(), m_ending),
      m_pStatusTimer(new QTimer(this)),
      m_scanWatchdog(*this),
      m_pRetryTimer(new QTimer(this)),
      m_pWorkThread(new QThread(this)) {
    qRegisterMetaType<QProcess::ProcessState>();
    // On the worker thread, where timers stop and process objects are given up.
    connect(
        m_pWorkThread, &QThread::finished, this,
        [this] {
            if (m_ending.IsSet()) {  // otherwise there is no QCoreApplication: it ends at once
                m_pStatusTimer->stop();
                m_pRetryTimer->stop();
                m_scanWatchdog.Timer().stop();
                m_processes.LeaveRunning();
                // A service that was killed tells the client when its object is deleted. Qt would
                // do so later, when the client may be gone.
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            }
            m_ended.Set();
        },
        Qt::DirectConnection);
    m_pWorkThread->start();
    moveToThread(m_pWorkThread);
    m_pStatusTimer->setTimerType(Qt::PreciseTimer);
    connect(m_pStatusTimer, &QTimer::timeout, this, &zr3DHandiSyncQT::OnStatusTimerOut,
            Qt::UniqueConnection);
    QTimer& scanTimer = m_scanWatchdog.Timer();
    scanTimer.setTimerType(Qt::PreciseTimer);
    scanTimer.setSingleShot(true);
    connect(&scanTimer, &QTimer::timeout, this, &zr3DHandiSyncQT::OnCallbackTimerOut,
            Qt::UniqueConnection);
    m_pRetryTimer->setTimerType(Qt::PreciseTimer);
    m_pRetryTimer->setSingleShot(true);
    connect(m_pRetryTimer, &QTimer::timeout, this, &zr3DHandiSyncQT::ReConnect);
}

zr3DHandiSyncQT::~zr3DHandiSyncQT() {
    m_ending.Set();
    m_pWorkThread->quit();
    if (m_pWorkThread->isRunning() || m_pWorkThread->isFinished()) {
        m_ended.Wait();
    }
    m_pWorkThread->wait();
}

zr3DHandiSyncQT::Service zr3DHandiSyncQT::TheService() const {
    os::MutexGuard guard(m_linkMutex);
    return m_pSyncInterface;
}

zr3DHandiSyncQT::Service zr3DHandiSyncQT::ConnectedService() const {
    return m_llDeviceId == 0 ? nullptr : TheService();
}

void zr3DHandiSyncQT::OnWorkThread(const std::function<void()>& work) {
    if (QThread::currentThread() == m_pWorkThread) {
        work();
        return;
    }
    os::Event done;
    {
        os::MutexGuard guard(m_workMutex);
        m_work = [&work, &done] {
            work();
            done.Set();
        };
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    done.Wait();
}

void zr3DHandiSyncQT::customEvent(QEvent*) {
    std::function<void()> work;
    {
        os::MutexGuard guard(m_workMutex);
        work.swap(m_work);
    }
    work();
}

bool zr3DHandiSyncQT::Init() {
    if (QCoreApplication::instance() == nullptr) {
        KORVEX_LOG_ERROR(kServiceLog)
            << "service mode needs a QCoreApplication; create one before switching it on";
        return false;
    }
    {
        os::CriticalSectionGuard guard(m_csService);
        bool started = false;
        OnWorkThread([this, &started] { started = StartScanServiceProcess(); });
        if (!started) {
            LogDebug("startScanServiceProcess failed");
            return false;
        }
    }
    Pause(milliseconds(3000));
    os::CriticalSectionGuard guard(m_csService);
    QStringList names;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> isColor;
    int count = 0;
    TheService()->getCamerasInformation("KV00", names, widths, heights, isColor, count);
    return count > 0;
}

bool zr3DHandiSyncQT::StartScanServiceProcess() {
    if (m_processes.EndService()) {
        StartStatusTimer(false);
    }
    return m_processes.Start() && StartLink();
}

bool zr3DHandiSyncQT::StartLink() {
    if (TheService() != nullptr) {
        return true;
    }
    Service link;
    try {
        link = std::make_shared<SyncInterface>();
    } catch (const std::bad_alloc&) {
        KORVEX_LOG(kServiceLog) << "Create SyncInterface failed!";
        return false;
    }
    // It is made on the worker thread, so it lives there. By name, because the address of a signal
    // in a DLL that imports its class may differ from the one that the class knows.
    connect(link.get(), SIGNAL(sendMessage(QString, QString, QList<QVariant>, QString)), this,
            SLOT(recvMessage(QString, QString, QList<QVariant>, QString)), Qt::QueuedConnection);
    connect(link.get(), SIGNAL(sendCallback(QString, QString, QList<QVariant>, QString)), this,
            SLOT(recvCallback(QString, QString, QList<QVariant>, QString)), Qt::QueuedConnection);
    os::MutexGuard guard(m_linkMutex);
    m_pSyncInterface = link;
    return true;
}

void zr3DHandiSyncQT::recvMessage(QString, QString, QList<QVariant> list, QString) {
    const auto status = ReadStatusMessage(list);
    if (!status) {
        return;
    }
    QMetaObject::invokeMethod(this, "StartStatusTimer", Qt::QueuedConnection, Q_ARG(bool, true));
    m_status.Deliver(*status);
}

void zr3DHandiSyncQT::recvCallback(QString, QString, QList<QVariant> list, QString) {
    if (MoreSetsFollow(list)) {
        m_scanWatchdog.QueueStart();
    }
    const auto notice = ReadImageSetNotice(list);
    if (!notice) {
        return;
    }
    const ImageSetDelivery::Result result = m_imageSets.Deliver(*notice);
    m_account.SetEnded(list, result.fate, result.took);
}

void zr3DHandiSyncQT::OnStatusTimerOut() {
    if (m_iStatusNoticeCount < m_configuration.m_iStatusTimeOutNoticeMaxNum &&
        m_status.Deliver(kStatusLost)) {
        ++m_iStatusNoticeCount;
    }
}

void zr3DHandiSyncQT::OnCallbackTimerOut() {
    if (!m_scanWatchdog.TimedOut()) {
        return;
    }
    KORVEX_LOG(kServiceLog) << "ScanCallBack time out!!";
    LogDebug("ScanCallBack time out!! Start Reconnect.");
    QMetaObject::invokeMethod(this, "ReConnect", Qt::QueuedConnection);
}

void zr3DHandiSyncQT::OnDeviceServiceStateChanged(QProcess::ProcessState newState) {
    if (newState != QProcess::NotRunning) {
        return;
    }
    const std::string text =
        "\n\n#####\nDeviceServiceProcess state changed: " + std::to_string(newState) +
        "\n######\n\n";
    qCritical("%s", text.c_str());
    KORVEX_LOG(kServiceLog) << text;
}

void zr3DHandiSyncQT::ReConnect() {
    m_bReconnecting = true;
    qDebug() << "ReconnectCount =" << m_iReconnectCount
             << "MaxReconnectCount = " << m_configuration.m_iMaxReconnectCount;
    if (m_configuration.m_iMaxReconnectCount != -1 &&
        m_iReconnectCount >= m_configuration.m_iMaxReconnectCount) {
        LogDebug("Start ReStartDevice");
        m_iReconnectCount = 0;
    }
    bool connected = Init();
    LogBoth("ReConnect init ret=" + std::to_string(connected));
    if (connected) {
        connected = ConnectInner();
        LogBoth("ReConnect ConnectInner ret=" + std::to_string(connected));
    }
    ++m_iReconnectCount;
    if (connected) {
        m_account.Reconnected();
        m_iStatusNoticeCount = 0;
        m_iReconnectCount = 0;
        m_pRetryTimer->stop();
    } else {
        m_pRetryTimer->start(Interval(m_configuration.m_iReconnectPeriod, std::chrono::seconds(1)));
    }
    m_bReconnecting = false;
}

void zr3DHandiSyncQT::StartStatusTimer(bool bStart) {
    if (bStart) {
        m_pStatusTimer->start(Interval(m_configuration.m_iStatusTimeOut, milliseconds(100)));
        m_iStatusNoticeCount = 0;
    } else {
        m_pStatusTimer->stop();
    }
}

void zr3DHandiSyncQT::StartScanCallBackTimer(bool bStart) {
    if (bStart) {
        m_scanWatchdog.Start(
            Interval(m_configuration.m_iRestartProcessWaitTime, std::chrono::seconds(1)));
    } else {
        m_scanWatchdog.StopNow();
    }
}

}  // namespace Korvex3Sync
