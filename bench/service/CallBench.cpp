// The round trip of a call to the device service, and calls per second with one and eight callers,
// beside a bare echo over a local socket, in turns:
//
//     call_bench             measures
//     call_bench echo PATH   is the other end of the echo

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <string>
#include <thread>
#include <vector>

#include "Report.h"
#include "platform/include/SyncInterface.h"
#include "service/Latency.h"
#include "service/ServicePair.h"

namespace {

constexpr int kRounds = 5;
constexpr int kWarmUp = 200;
constexpr int kCalls = 4000;
constexpr int kManyCallers = 8;
/// About the size of a call's message.
constexpr int kEchoBytes = 32;
constexpr int kWaitMs = 10000;

/// Calls from one thread: how long each took.
template <class Call>
std::vector<std::int64_t> Latencies(Call call) {
    std::vector<std::int64_t> took;
    took.reserve(kCalls);
    for (int i = 0; i < kWarmUp + kCalls; ++i) {
        const std::int64_t begin = bench::Nanoseconds();
        call();
        if (i >= kWarmUp) {
            took.push_back(bench::Nanoseconds() - begin);
        }
    }
    return took;
}

/// Calls per second of so many threads; `makeCall` makes what a thread calls.
template <class MakeCall>
double CallsPerSecond(int callers, MakeCall makeCall) {
    const std::int64_t begin = bench::Nanoseconds();
    std::vector<std::thread> threads;
    for (int i = 0; i < callers; ++i) {
        threads.emplace_back([&makeCall] {
            auto call = makeCall();
            for (int made = 0; made < kCalls; ++made) {
                call();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    constexpr double kNanosecondsOfSecond = 1e9;
    return callers * kCalls /
           (static_cast<double>(bench::Nanoseconds() - begin) / kNanosecondsOfSecond);
}

int ServeEcho(const QString& path) {
    QLocalServer server;
    if (!server.listen(path)) {
        return EXIT_FAILURE;
    }
    QObject::connect(&server, &QLocalServer::newConnection, [&server] {
        QLocalSocket* const socket = server.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead,
                         [socket] { socket->write(socket->readAll()); });
    });
    return QCoreApplication::exec();
}

/// One caller of the echo. It belongs to the thread that makes it.
class EchoCaller {
public:
    explicit EchoCaller(const QString& path) : m_socket(std::make_unique<QLocalSocket>()) {
        const std::int64_t begin = bench::Nanoseconds();
        constexpr std::int64_t kLimit = 10'000'000'000;
        do {
            m_socket->connectToServer(path);
        } while (!m_socket->waitForConnected(kWaitMs) && bench::Nanoseconds() - begin < kLimit);
    }

    void operator()() {
        m_socket->write(QByteArray(kEchoBytes, 'x'));
        int left = kEchoBytes;
        while (left > 0) {
            if (!m_socket->waitForReadyRead(kWaitMs)) {
                bench::Fail("the echo does not answer");
            }
            left -= m_socket->readAll().size();
        }
    }

private:
    std::unique_ptr<QLocalSocket> m_socket;
};

void Append(std::vector<std::int64_t>& all, const std::vector<std::int64_t>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

void Measure() {
    const bench::ServicePair pair;
    const QString path = QString::fromStdString((pair.Folders().Path() / "echo").string());
    const Korvex3Sync::tests::ChildProcess echoServer(
        {QCoreApplication::applicationFilePath().toStdString(), "echo", path.toStdString()},
        bench::UseFolders(pair.Folders()));
    SyncInterface client;
    const qint64 id = bench::ServicePair::Connect(client);
    const auto call = [&] {
        int count = 0;
        if (client.getConnectCameraCount(id, count) != Korvex3Sync::STATUS_SUCCESS) {
            bench::Fail("a call failed");
        }
    };
    const auto makeCall = [&call] { return call; };
    const auto makeEcho = [&path] { return EchoCaller(path); };

    std::vector<std::int64_t> calls;
    std::vector<std::int64_t> echoes;
    std::vector<double> ratios;
    std::vector<double> one;
    std::vector<double> echoOne;
    std::vector<double> many;
    std::vector<double> echoMany;
    for (int round = 0; round < kRounds; ++round) {
        const std::vector<std::int64_t> echo = Latencies(makeEcho());
        const std::vector<std::int64_t> took = Latencies(call);
        ratios.push_back(bench::MedianMicroseconds(took) / bench::MedianMicroseconds(echo));
        Append(calls, took);
        Append(echoes, echo);
        echoOne.push_back(CallsPerSecond(1, makeEcho));
        one.push_back(CallsPerSecond(1, makeCall));
        echoMany.push_back(CallsPerSecond(kManyCallers, makeEcho));
        many.push_back(CallsPerSecond(kManyCallers, makeCall));
    }
    client.disConnectDevice(id);
    bench::PrintLatency("call of the service, round trip", calls);
    bench::PrintLatency("bare echo, round trip", echoes);
    bench::PrintSpread("call / echo, p50", ratios, "");
    bench::PrintSpread("calls per second, 1 caller", one, "/s");
    bench::PrintSpread("echoes per second, 1 caller", echoOne, "/s");
    bench::PrintSpread("calls per second, 8 callers", many, "/s");
    bench::PrintSpread("echoes per second, 8 callers", echoMany, "/s");
}

}  // namespace

int main(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    if (count == 3 && std::string(arguments[1]) == "echo") {
        return ServeEcho(arguments[2]);
    }
    bench::SilenceLibrary();
    Measure();
}
