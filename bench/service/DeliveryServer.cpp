#include "service/DeliveryServer.h"

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSharedMemory>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "Report.h"
#include "device_service/core/SetDelivery.h"
#include "device_service/core/Signals.h"
#include "platform/link/Server.h"
#include "platform/link/hub/HubLink.h"
#include "platform/link/hub/HubServer.h"
#include "platform/os/UserFolders.h"
#include "service/Latency.h"

namespace bench {

namespace {

using namespace Korvex3Sync;
using namespace std::chrono_literals;

constexpr auto kPeriod = 5ms;

/// Three images one after the other, with the moment in front.
std::vector<char>& Stamped(std::vector<char>& images) {
    const std::int64_t now = Nanoseconds();
    std::memcpy(images.data(), &now, sizeof(now));
    return images;
}

/// Calls `send` every 5 ms on the thread of the event loop, with the first client.
int SendToFirstClient(const QString& path, const std::function<void(QLocalSocket&)>& send) {
    QLocalServer server;
    if (!server.listen(path)) {
        return EXIT_FAILURE;
    }
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&server, &QLocalServer::newConnection, [&] {
        QLocalSocket* const socket = server.nextPendingConnection();
        QObject::connect(&timer, &QTimer::timeout, [socket, &send] { send(*socket); });
        QObject::connect(socket, &QLocalSocket::disconnected, &QCoreApplication::quit);
        timer.start(kPeriod);
    });
    return QCoreApplication::exec();
}

int ServeSocket(const QString& path) {
    std::vector<char> images(kBytesOfASet, 'x');
    return SendToFirstClient(path, [&images](QLocalSocket& socket) {
        // A set that waits counts as sent late, not as two at once.
        if (socket.bytesToWrite() == 0) {
            socket.write(Stamped(images).data(), static_cast<qint64>(images.size()));
            socket.flush();
        }
    });
}

int ServeSharedMemory(const QString& path) {
    QSharedMemory memory(path);
    if (!memory.create(static_cast<int>(kBytesOfASet))) {
        return EXIT_FAILURE;
    }
    std::vector<char> images(kBytesOfASet, 'x');
    return SendToFirstClient(path, [&](QLocalSocket& socket) {
        Stamped(images);
        memory.lock();
        std::memcpy(memory.data(), images.data(), images.size());
        memory.unlock();
        socket.write(images.data(), sizeof(std::int64_t));
        socket.flush();
    });
}

/// The service's own parts, with images of this program instead of a head's.
int ServeLink(bool withOwnHub) {
    std::string reason;
    link::HubServer hub("", [] {});
    const std::string path = os::SocketPath(link::kServiceSocket, reason).string();
    link::Server server(path, link::Role::Service);
    std::atomic<link::ClientId> client{0};
    server.On<link::ConnectDevice>(
        [&client](link::ClientId caller, const auto&, link::ConnectDevice::Out& out) {
            client = caller;
            std::get<0>(out) = 1;
            return STATUS_SUCCESS;
        });
    // What the library's client asks before it takes sets.
    server.On<link::GetCamerasInformation>([](link::ClientId, const auto&, auto& out) {
        std::get<int>(out) = 1;
        return STATUS_SUCCESS;
    });
    server.On<link::SetScanCallBackFunction>(
        [](link::ClientId, const auto&, auto&) { return STATUS_SUCCESS; });
    if ((withOwnHub && !hub.Listen(reason)) || !server.Listen(reason)) {
        return EXIT_FAILURE;
    }
    const link::HubLink registered(
        link::HubLink::RegistrationOf(link::kServiceName, QString::fromStdString(path)), [] {});
    auto area = device_service::MakeSetArea(reason);
    if (!area) {
        return EXIT_FAILURE;
    }
    const std::uint64_t generation = area->Generation();
    device_service::SetDelivery delivery(
        nullptr, generation, std::move(area), [&](const device_service::SetNotice& notice) {
            return server.Send(client, device_service::SignalOf(notice));
        });
    std::vector<char> bytes(kBytesOfASet, 'x');
    std::vector<unsigned char*> images;
    for (std::size_t i = 0; i < device_service::kImagesOfASet; ++i) {
        images.push_back(
            reinterpret_cast<unsigned char*>(bytes.data() + i * device_service::kImageBytes));
    }
    const void* const context = &delivery;
    std::vector<int> info(images.size(), 1);
    for (auto next = std::chrono::steady_clock::now();; next += kPeriod) {
        std::this_thread::sleep_until(next);
        if (client != 0) {
            Stamped(bytes);
            device_service::SetDelivery::OnSet(context, images, device_service::kImageWidth,
                                               device_service::kImageHeight, info);
        }
    }
}

}  // namespace

int ServeDelivery(const std::string& way, const QString& path) {
    return way == "link" || way == "hub" ? ServeLink(way == "link")
           : way == "shm"                ? ServeSharedMemory(path)
                                         : ServeSocket(path);
}

}  // namespace bench
