#include "platform/link/ClientConnection.h"

#include <chrono>

#include "platform/link/HubOperations.h"
#include "platform/os/FileName.h"
#include "platform/os/Log.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::link {
namespace {

constexpr std::chrono::milliseconds kRetryAfter{100};
constexpr std::chrono::milliseconds kAttemptLimit{2'000};

/// Why a channel has closed, for people.
std::string Reason(const std::string& fault) {
    return fault.empty() ? "the other end closed the connection" : fault;
}

QString QtPath(const std::filesystem::path& path) {
    return QString::fromStdString(os::TextOf(path));
}

}  // namespace

ClientConnection::ClientConnection(IoLoop& loop, Client::Target target, Events events)
    : m_loop(loop), m_target(target), m_events(std::move(events)) {
    for (QTimer* const timer : {&m_next, &m_attemptLimit}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    QObject::connect(&m_next, &QTimer::timeout, &m_next, [this] { Try(); });
    QObject::connect(&m_attemptLimit, &QTimer::timeout, &m_attemptLimit,
                     [this] { Fail("no answer within the limit"); });
    Try();
}

ClientConnection::~ClientConnection() {
    if (m_channel != nullptr) {
        m_channel->Close();
    }
}

void ClientConnection::Flush() {
    if (m_connected) {
        m_channel->Flush();
    }
}

void ClientConnection::Drop(const std::string& reason) {
    if (m_connected) {
        Fail(reason);
    }
}

void ClientConnection::Try() {
    m_events.trying();
    m_attemptLimit.start(TimerInterval(kAttemptLimit));
    ConnectHub();
}

void ClientConnection::ConnectHub() {
    std::string reason;
    const std::filesystem::path path = os::SocketPath(kHubSocket, reason);
    if (path.empty()) {
        return Fail(reason);
    }
    if (m_target == Client::Target::Hub) {
        return ConnectTarget(QtPath(path), Role::Hub);
    }
    Open(QtPath(path), Role::Hub,
         {[this](long) { AskHub(); }, [this](Message& message) { return TakeHubAnswer(message); },
          [this](const std::string& fault) { Fail("hub: " + Reason(fault)); }});
}

void ClientConnection::AskHub() {
    ByteWriter name;
    Write(name, LookUpService::In(kServiceName));
    m_channel->Send(Encoded(CallMessage{1, LookUpService::kNumber, name.Bytes()}));
}

std::string ClientConnection::TakeHubAnswer(const Message& message) {
    const auto* const reply = std::get_if<ReplyMessage>(&message);
    LookUpService::Out found;
    if (reply == nullptr) {
        return "an unexpected message";
    }
    if (reply->status == STATUS_SUCCESS && !ReadWhole(SpanOf(reply->results), found)) {
        return "a malformed answer";
    }
    if (reply->status != STATUS_SUCCESS) {
        Fail(std::string("the hub knows no ") + kServiceName);
    } else {
        EndChannel();
        ConnectTarget(std::get<0>(found).socket, Role::Service);
    }
    return "";
}

void ClientConnection::ConnectTarget(const QString& path, Role role) {
    Open(path, role,
         {[this](long process) {
              m_attemptLimit.stop();
              m_connected = true;
              m_lastReason.clear();
              LOG(INFO) << "Connected to the " << TargetName() << " (process " << process << ")";
              m_events.connected(m_channel->Out());
          },
          m_events.message, [this](const std::string& fault) { Fail(Reason(fault)); }});
}

void ClientConnection::Open(const QString& path, Role role, Channel::Events events) {
    m_channel = std::make_unique<Channel>(std::make_unique<QLocalSocket>(), Role::Client, role,
                                          std::move(events));
    m_channel->Connect(path);
}

void ClientConnection::Fail(const std::string& reason) {
    const bool wasConnected = std::exchange(m_connected, false);
    m_attemptLimit.stop();
    if (wasConnected) {
        LOG(WARNING) << "The connection to the " << TargetName() << " is lost: " << reason;
    } else if (reason != m_lastReason) {
        LOG(WARNING) << "Cannot connect to the " << TargetName() << ": " << reason;
        m_lastReason = reason;
    }
    EndChannel();
    (wasConnected ? m_events.lost : m_events.failed)();
    m_next.start(TimerInterval(kRetryAfter));
}

void ClientConnection::EndChannel() {
    if (m_channel != nullptr) {
        m_channel->Close();
        m_loop.DeleteLater(std::move(m_channel));
    }
}

const char* ClientConnection::TargetName() const {
    return m_target == Client::Target::Service ? "device service" : "hub";
}

}  // namespace Korvex3Sync::link
