// An application of the device service as a test needs it: it connects, scans, reads every image
// set and connects again when something is lost, until its standard input ends. It says what
// happens in lines on standard output (ApplicationProcess.h reads them):
//
//     survival_application scan     keeps a scan running
//     survival_application calls    makes calls without a pause on several threads
//     survival_application count    counts the cameras, without a device

#include <unistd.h>
#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/include/QtTunnel.h"
#include "platform/include/SyncInterface.h"
#include "survival/Lines.h"

namespace Korvex3Sync::tests {

namespace {

using namespace std::chrono_literals;
constexpr qint64 kImageBytes = 1280LL * 1024;
constexpr int kTriggerPeriodMs = 10;
/// Longer than any pause of a scan that works.
constexpr auto kSilence = 5s;

/// Keeps a scan running.
class Scanner {
public:
    explicit Scanner(SyncInterface& service) : m_service(service) {
        // Handed over by hand: the thread sanitizer does not see how Qt queues a signal.
        m_notices =
            QObject::connect(&service, &SyncInterface::sendCallback,
                             [this](const QString&, const QString&, const QList<QVariant>& notice) {
                                 std::vector<std::string> names;
                                 for (const QString& name : notice.value(3).toStringList()) {
                                     names.push_back(name.toStdString());
                                 }
                                 const std::lock_guard lock(m_mutex);
                                 m_sets.push_back(std::move(names));
                                 m_changed.notify_one();
                             });
        m_reader = std::thread([this] { ReadSets(); });
    }
    ~Scanner() {
        QObject::disconnect(m_notices);
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        m_changed.notify_one();
        m_reader.join();
    }
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    void Run(const std::atomic<bool>& end) {
        while (!end) {
            if (m_id == 0 && !Connect()) {
                std::this_thread::sleep_for(5ms);
                continue;
            }
            std::this_thread::sleep_for(10ms);
            int period = 0;
            const std::int64_t silent = Nanoseconds() - m_lastSet;
            if (Timed("getVideoTriggerPeriod",
                      [&] { return m_service.getVideoTriggerPeriod(m_id, period); }) !=
                    STATUS_SUCCESS ||
                silent > std::chrono::nanoseconds(kSilence).count()) {
                Say("down %" PRId64 "\n", Nanoseconds());
                m_id = 0;
            }
        }
        if (m_id != 0) {
            Timed("disConnectDevice", [this] { return m_service.disConnectDevice(m_id); });
        }
    }

private:
    bool Connect() {
        qint64 id = 0;
        if (Timed("connectDevice", [&] { return m_service.connectDevice("KV00", id); }) !=
            STATUS_SUCCESS) {
            return false;
        }
        const bool scans =
            Timed("setScanCallBackFunction",
                  [&] { return m_service.setScanCallBackFunction(id, true); }) == STATUS_SUCCESS &&
            Timed("setVideoTriggerPeriod",
                  [&] { return m_service.setVideoTriggerPeriod(id, kTriggerPeriodMs); }) ==
                STATUS_SUCCESS &&
            Timed("enableVideoTrigger", [&] {
                return m_service.enableVideoTrigger(id, TRIGGER_LASER_LINES_COLOR, true);
            }) == STATUS_SUCCESS;
        if (scans) {
            m_lastSet = Nanoseconds();
            m_id = id;
            Say("up %" PRId64 " %lld\n", Nanoseconds(), static_cast<long long>(id));
        }
        return scans;
    }

    void ReadSets() {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_ending || !m_sets.empty(); });
            if (m_ending) {
                return;
            }
            const std::vector<std::string> names = std::move(m_sets.front());
            m_sets.pop_front();
            lock.unlock();
            TakeSet(names);
            lock.lock();
        }
    }

    /// Reads the images as the library's client does.
    void TakeSet(const std::vector<std::string>& names) {
        QtTunnel::SharedMemory* const area =
            QtTunnel::SharedMemory::open("ZrSyncService_SharedMemory", kAreaSize);
        if (area == nullptr || names.empty()) {
            Say("lost %" PRId64 " area\n", Nanoseconds());
            return;
        }
        for (const std::string& name : names) {
            QtTunnel::Segment* const segment = area->segment(QString::fromStdString(name), 0);
            if (segment == nullptr) {
                Say("lost %" PRId64 " segment\n", Nanoseconds());
                return;
            }
            segment->lock();
            const qint64 got = segment->read(m_image.data(), kImageBytes);
            segment->unlock();
            area->destroy(segment);
            if (got != kImageBytes) {
                Say("bad %" PRId64 " %lld bytes\n", Nanoseconds(), static_cast<long long>(got));
                return;
            }
        }
        m_lastSet = Nanoseconds();
        Say("set %" PRId64 " %d\n", Nanoseconds(), static_cast<int>(names.size()));
    }

    static constexpr unsigned long long kAreaSize = 1024;

    SyncInterface& m_service;
    std::atomic<qint64> m_id{0};
    std::atomic<std::int64_t> m_lastSet{0};
    std::vector<char> m_image = std::vector<char>(kImageBytes);
    QMetaObject::Connection m_notices;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::vector<std::string>> m_sets;
    bool m_ending = false;
    std::thread m_reader;
};

/// Makes calls without a pause.
class Caller {
public:
    explicit Caller(SyncInterface& service) : m_service(service) {}

    void Run(const std::atomic<bool>& end) {
        std::vector<std::thread> others;
        for (int i = 0; i < 3; ++i) {
            others.emplace_back([this, &end] { CallOn(end); });
        }
        while (!end) {
            qint64 id = 0;
            if (m_id == 0 && Timed("connectDevice", [&] {
                                 return m_service.connectDevice("KV00", id);
                             }) == STATUS_SUCCESS) {
                m_id = id;
                Say("up %" PRId64 " %lld\n", Nanoseconds(), static_cast<long long>(id));
            }
            std::this_thread::sleep_for(5ms);
        }
        for (std::thread& other : others) {
            other.join();
        }
        if (m_id != 0) {
            Timed("disConnectDevice", [this] { return m_service.disConnectDevice(m_id); });
        }
    }

private:
    void CallOn(const std::atomic<bool>& end) {
        int wrong = 0;
        for (int i = 0; !end; ++i) {
            const qint64 id = m_id;
            if (id == 0) {
                std::this_thread::sleep_for(1ms);
                continue;
            }
            const int level = i % 100;
            const std::int64_t begin = Nanoseconds();
            int got = 0;
            const RETSTATUS status = i % 2 == 0 ? m_service.setProjectorBrightness(id, level)
                                                : m_service.getProjectorBrightness(id, got);
            const double took = static_cast<double>(Nanoseconds() - begin) / 1e6;
            if (status != STATUS_SUCCESS) {
                Say("call %" PRId64 " brightness %d %.3f\n", Nanoseconds(),
                    static_cast<int>(status), took);
                qint64 lost = id;
                m_id.compare_exchange_strong(lost, 0);
                wrong = 1;
            } else if (took > 1000 || wrong != 0) {
                wrong = 0;
                Say("call %" PRId64 " brightness 7 %.3f\n", Nanoseconds(), took);
            }
        }
    }

    SyncInterface& m_service;
    std::atomic<qint64> m_id{0};
};

/// Counts the cameras again and again: what every client may do.
class Counter {
public:
    explicit Counter(SyncInterface& service) : m_service(service) {}

    void Run(const std::atomic<bool>& end) {
        while (!end) {
            int count = 0;
            if (Timed("getCameraCount", [&] { return m_service.getCameraCount("KV00", count); }) ==
                STATUS_SUCCESS) {
                Say("counted %" PRId64 " %d\n", Nanoseconds(), count);
            }
            std::this_thread::sleep_for(5ms);
        }
    }

private:
    SyncInterface& m_service;
};

/// Ends the program at the end of its input.
void WaitForEndOfInput() {
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
}

template <class User>
int Use(SyncInterface& service, QCoreApplication& application) {
    User user(service);
    std::atomic<bool> end{false};
    std::thread run([&] { user.Run(end); });
    std::thread input([&] {
        WaitForEndOfInput();
        end = true;
        run.join();
        application.quit();
    });
    const int code = application.exec();
    input.join();
    return code;
}

}  // namespace

}  // namespace Korvex3Sync::tests

int main(int count, char** arguments) {
    using namespace Korvex3Sync::tests;
    QCoreApplication application(count, arguments);
    SyncInterface service;
    const std::string use = count > 1 ? arguments[1] : "";
    return use == "calls"   ? Use<Caller>(service, application)
           : use == "count" ? Use<Counter>(service, application)
                            : Use<Scanner>(service, application);
}
