// A scan of the virtual head in the device service at 5 ms, three images a set: sets per second,
// losses, and the processor time of the service and of the client, which reads every image.

#include <unistd.h>
#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Report.h"
#include "platform/include/SyncInterface.h"
#include "service/Latency.h"
#include "service/ReadSet.h"
#include "service/ServicePair.h"

namespace {

constexpr int kPeriodMs = 5;
constexpr int kWarmUpSets = 400;
constexpr int kSets = 4000;

/// Seconds of processor time that a process has used.
double ProcessorSeconds(long process) {
    std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(stream, text);
    // The name in parentheses may contain spaces; utime and stime are the 12th and 13th word
    // behind it.
    std::istringstream words(text.substr(text.rfind(')') + 1));
    std::string word;
    constexpr int kBefore = 11;
    for (int i = 0; i < kBefore; ++i) {
        words >> word;
    }
    double user = 0;
    double system = 0;
    words >> user >> system;
    return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// What the client has seen at one moment.
struct Seen {
    std::int64_t time = 0;
    qulonglong number = 0;      // of the set
    qulonglong notWritten = 0;  // sets, by the service
    qulonglong notSent = 0;     // notices, by the service
    long unread = 0;            // sets, by the client
    double service = 0;         // processor seconds
    double client = 0;
};

void Measure() {
    const bench::ServicePair pair;
    SyncInterface client;
    bench::SetReader reader;
    Seen first;
    Seen last;
    long sets = 0;
    long unread = 0;
    QObject::connect(&client, &SyncInterface::sendCallback, QCoreApplication::instance(),
                     [&](const QString&, const QString&, const QList<QVariant>& notice) {
                         unread += reader.Read(notice) ? 0 : 1;
                         ++sets;
                         if (sets == kWarmUpSets || sets == kWarmUpSets + kSets) {
                             Seen& seen = sets == kWarmUpSets ? first : last;
                             seen = {bench::Nanoseconds(),
                                     notice.value(5).toULongLong(),
                                     notice.value(6).toULongLong(),
                                     notice.value(7).toULongLong(),
                                     unread,
                                     ProcessorSeconds(pair.Service()),
                                     ProcessorSeconds(::getpid())};
                         }
                         if (sets == kWarmUpSets + kSets) {
                             QCoreApplication::quit();
                         }
                     });
    const qint64 id = bench::ServicePair::Connect(client);
    client.setScanCallBackFunction(id, true);
    client.setVideoTriggerPeriod(id, kPeriodMs);
    client.enableVideoTrigger(id, Korvex3Sync::TRIGGER_LASER_LINES_COLOR, true);
    QTimer::singleShot(std::chrono::minutes(2), QCoreApplication::instance(),
                       [] { bench::Fail("the sets did not arrive within two minutes"); });
    QCoreApplication::exec();
    client.disConnectDevice(id);

    constexpr double kNanosecondsOfSecond = 1e9;
    const double seconds = static_cast<double>(last.time - first.time) / kNanosecondsOfSecond;
    bench::Print("%d sets of three images in %.2f s: %.1f sets/s\n", kSets, seconds,
                 kSets / seconds);
    bench::Print(
        "lost: %lld between service and client, %llu not written, %llu not sent, %ld not "
        "readable\n",
        static_cast<long long>(last.number - first.number) - kSets,
        last.notWritten - first.notWritten, last.notSent - first.notSent,
        last.unread - first.unread);
    bench::Print("processor time, of one core: service %.2f, client %.2f\n",
                 (last.service - first.service) / seconds, (last.client - first.client) / seconds);
}

}  // namespace

int main(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    bench::SilenceLibrary();
    Measure();
}
