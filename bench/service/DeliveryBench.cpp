// How long three images take from the device service's scan callback to the client, beside the same
// bytes through QSharedMemory, through a socket, and in a plain memcpy, in turns:
//
//     delivery_bench            measures
//     delivery_bench WAY PATH   is the other end of one way (DeliveryServer.h)

#include <QCoreApplication>
#include <QFile>
#include <QLocalSocket>
#include <QSharedMemory>
#include <QThread>
#include <QTimer>
#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Report.h"
#include "platform/include/SyncInterface.h"
#include "service/DeliveryServer.h"
#include "service/Latency.h"
#include "service/ReadSet.h"
#include "service/ServicePair.h"

namespace {

using Korvex3Sync::tests::ChildProcess;
using Korvex3Sync::tests::OwnFolders;

constexpr int kRounds = 3;
constexpr int kWarmUp = 100;

/// Delays since the moment at which the images began their way.
struct Delays {
    std::vector<std::int64_t> noticed;  ///< until the client's slot ran
    std::vector<std::int64_t> copied;   ///< until it had copied all images
    int sets = 0;
    int lost = 0;  ///< arrived too late to be read

    /// True when all sets have come.
    bool Add(std::int64_t begin, std::int64_t slot, std::int64_t end) {
        if (++sets > kWarmUp) {
            noticed.push_back(slot - begin);
            copied.push_back(end - begin);
        }
        return sets == bench::kDeliveredSets;
    }
};

/// Runs the event loop until the sets have come.
void WaitForSets(const char* way, const Delays& delays) {
    QTimer late;
    QObject::connect(&late, &QTimer::timeout, [&] {
        bench::Fail(std::string(way) + ": " + std::to_string(delays.sets) + " sets in a minute, " +
                    std::to_string(delays.lost) + " too late");
    });
    late.start(std::chrono::seconds(60));
    QCoreApplication::exec();
}

void ThroughTheService(Delays& delays) {
    SyncInterface client;
    bench::SetReader reader;
    QObject::connect(&client, &SyncInterface::sendCallback, QCoreApplication::instance(),
                     [&](const QString&, const QString&, const QList<QVariant>& notice) {
                         const std::int64_t slot = bench::Nanoseconds();
                         if (!reader.Read(notice)) {
                             ++delays.lost;
                         } else if (delays.Add(reader.Stamp(), slot, bench::Nanoseconds())) {
                             QCoreApplication::quit();
                         }
                     });
    bench::ServicePair::Connect(client);
    WaitForSets("link", delays);
}

/// Connects to the other end, which may just be starting.
void ConnectTo(QLocalSocket& socket, const QString& path) {
    constexpr int kWaitMs = 100;
    constexpr int kTries = 100;
    for (int i = 0; i < kTries; ++i) {
        socket.connectToServer(path);
        if (socket.waitForConnected(kWaitMs)) {
            return;
        }
        QThread::msleep(kWaitMs);
    }
    bench::Fail("the other end does not listen");
}

void ThroughQSharedMemory(const QString& path, Delays& delays) {
    QLocalSocket socket;
    ConnectTo(socket, path);
    QSharedMemory memory(path);
    std::vector<char> images(bench::kBytesOfASet);
    QObject::connect(&socket, &QLocalSocket::readyRead, [&] {
        std::int64_t begin = 0;
        while (socket.bytesAvailable() >= static_cast<qint64>(sizeof(begin))) {
            const std::int64_t slot = bench::Nanoseconds();
            socket.read(reinterpret_cast<char*>(&begin), sizeof(begin));
            if ((!memory.isAttached() && !memory.attach()) || !memory.lock()) {
                bench::Fail("QSharedMemory: " + memory.errorString().toStdString());
            }
            std::memcpy(images.data(), memory.constData(), images.size());
            memory.unlock();
            if (delays.Add(begin, slot, bench::Nanoseconds())) {
                QCoreApplication::quit();
            }
        }
    });
    WaitForSets("QSharedMemory", delays);
}

void ThroughASocket(const QString& path, Delays& delays) {
    QLocalSocket socket;
    ConnectTo(socket, path);
    std::vector<char> images(bench::kBytesOfASet);
    std::size_t got = 0;
    QObject::connect(&socket, &QLocalSocket::readyRead, [&] {
        while (socket.bytesAvailable() > 0) {
            got += static_cast<std::size_t>(
                socket.read(images.data() + got, static_cast<qint64>(images.size() - got)));
            if (got == images.size()) {
                got = 0;
                std::int64_t begin = 0;
                std::memcpy(&begin, images.data(), sizeof(begin));
                const std::int64_t end = bench::Nanoseconds();
                if (delays.Add(begin, end, end)) {
                    QCoreApplication::quit();
                }
            }
        }
    });
    WaitForSets("socket", delays);
}

/// One copy in and one copy out, on one thread.
void ThroughMemcpy(Delays& delays) {
    std::vector<char> source(bench::kBytesOfASet, 'x');
    std::vector<char> shared(bench::kBytesOfASet);
    std::vector<char> images(bench::kBytesOfASet);
    bool all = false;
    while (!all) {
        const std::int64_t begin = bench::Nanoseconds();
        std::memcpy(shared.data(), source.data(), source.size());
        asm volatile("" : : "r"(shared.data()) : "memory");  // the copy is used
        const std::int64_t between = bench::Nanoseconds();
        std::memcpy(images.data(), shared.data(), shared.size());
        asm volatile("" : : "r"(images.data()) : "memory");
        all = delays.Add(begin, between, bench::Nanoseconds());
    }
}

/// One round of a way: starts its other end, and takes its sets.
void Run(const OwnFolders& folders, const char* way, Delays& delays,
         const std::function<void(const QString& path, Delays& delays)>& take) {
    const QString path = QString::fromStdString((folders.Path() / way).string());
    QFile::remove(path);
    ChildProcess server(
        {QCoreApplication::applicationFilePath().toStdString(), way, path.toStdString()},
        bench::UseFolders(folders));
    delays.sets = 0;
    take(path, delays);
    if (std::string(way) != "link") {
        server.Wait();  // it ends with its client, and removes its shared memory
    }
}

void Measure() {
    const OwnFolders folders;  // a process keeps its areas, and these their folder
    Delays link;
    Delays shared;
    Delays socket;
    Delays memcpy;
    for (int round = 0; round < kRounds; ++round) {
        Run(folders, "link", link,
            [](const QString&, Delays& delays) { ThroughTheService(delays); });
        Run(folders, "shm", shared, ThroughQSharedMemory);
        Run(folders, "socket", socket, ThroughASocket);
        memcpy.sets = 0;
        ThroughMemcpy(memcpy);
    }
    bench::PrintLatency("service: callback to the client's slot", link.noticed);
    bench::PrintLatency("service: callback to the end of the copies", link.copied);
    bench::Print("service: %d sets lost\n", link.lost);
    bench::PrintLatency("QSharedMemory: to the client's slot", shared.noticed);
    bench::PrintLatency("QSharedMemory: to the end of the copies", shared.copied);
    bench::PrintLatency("socket: until all images have arrived", socket.copied);
    bench::PrintLatency("memcpy in", memcpy.noticed);
    bench::PrintLatency("memcpy in and out", memcpy.copied);
}

}  // namespace

int main(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    if (count == 3) {
        return bench::ServeDelivery(arguments[1], arguments[2]);
    }
    bench::SilenceLibrary();
    Measure();
}
