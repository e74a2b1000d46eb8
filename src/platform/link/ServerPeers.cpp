#include "platform/link/ServerPeers.h"

#include <chrono>

#include "platform/link/channel/RunLogged.h"
#include "platform/os/Clock.h"
#include "platform/os/Log.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::link {
namespace {

/// Connections at the same time. More are refused, so that the process keeps free descriptors.
constexpr std::size_t kMostPeers = 64;
/// Calls of one client without an answer. A caller waits for its answer, so a client has as many as
/// it has threads.
constexpr std::size_t kMostRunning = 256;
/// What may wait for a client before signals are lost.
constexpr qint64 kMostBacklog = 262'144;
/// How often the server checks that it can be reached.
constexpr std::chrono::milliseconds kCheckPeriod{500};
/// How long the check takes whether another process listens.
constexpr int kProbeMs = 500;

}  // namespace

void ServerPeers::AddHandler(std::uint16_t operation, Handler handler) {
    m_handlers[operation] = std::move(handler);
}

void ServerPeers::SetClientHandlers(std::function<void(ClientId, long)> came,
                                    std::function<void(ClientId)> gone) {
    m_came = std::move(came);
    m_gone = std::move(gone);
}

bool ServerPeers::Listen(std::string& reason) {
    m_started.Reset();
    std::string refusal;
    if (!m_loop.Start(
            {[&, this] { Started(refusal); }, [this] { Woken(); }, [this] { Stopping(); }},
            reason)) {
        return false;
    }
    m_started.Wait();
    if (!refusal.empty()) {
        m_loop.Stop();
        reason = refusal;
        return false;
    }
    return true;
}

void ServerPeers::Started(std::string& reason) {
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(m_server.get(), &QLocalServer::newConnection, m_server.get(),
                     [this] { OnConnection(); });
    if (Bind(reason)) {
        m_check = std::make_unique<QTimer>();
        QObject::connect(m_check.get(), &QTimer::timeout, m_check.get(),
                         [this] { CheckListening(); });
        m_check->start(TimerInterval(kCheckPeriod));
    }
    m_started.Set();
}

void ServerPeers::CheckListening() {
    // Qt closes the socket when the process runs out of descriptors; somebody may remove its file.
    if (m_server->isListening() && os::SocketInPlace(m_path)) {
        return;
    }
    m_server->close();
    std::string reason;
    if (Bind(reason)) {
        LOG(WARNING) << "Listening again on " << m_path;
    }
}

bool ServerPeers::Bind(std::string& reason) {
    const QString path = QString::fromStdString(m_path);
    QLocalSocket probe;
    probe.connectToServer(path);
    if (probe.waitForConnected(kProbeMs)) {
        reason = "another process listens on " + m_path;
        return false;
    }
    QLocalServer::removeServer(path);
    if (!m_server->listen(path)) {
        reason = "cannot listen on " + m_path + ": " + m_server->errorString().toStdString();
        return false;
    }
    return true;
}

std::shared_ptr<ServerPeers::Line> ServerPeers::LineOf(ClientId client) {
    os::MutexGuard lock(m_mutex);
    const auto found = m_lines.find(client);
    return found == m_lines.end() ? nullptr : found->second;
}

bool ServerPeers::Send(ClientId client, const Signal& signal) {
    const std::shared_ptr<Line> line = LineOf(client);
    if (line == nullptr) {
        return false;
    }
    switch (line->outlet->Send(Encoded(signal), kMostBacklog)) {
        case Outlet::Result::Sent:
            return true;
        case Outlet::Result::Waits:
            m_loop.Wake();
            return true;
        case Outlet::Result::Refused:
            break;
    }
    if (line->lost++ == 0) {
        LOG(WARNING) << "Client " << client << " does not keep up: signals are lost";
    }
    return false;
}

bool ServerPeers::Close(std::chrono::milliseconds nominalLimit) {
    const auto end = std::chrono::steady_clock::now() + os::Scaled(nominalLimit);
    const bool callsEnded = m_workers.Close(end);
    const bool ended = m_farewells.Close(end) && callsEnded;
    m_loop.Stop();
    return ended;
}

void ServerPeers::Woken() {
    std::vector<ClientId> clients;
    clients.reserve(m_peers.size());
    for (const auto& [client, peer] : m_peers) {
        clients.push_back(client);
    }
    for (const ClientId client : clients) {
        m_peers[client].channel->Flush();  // may end this peer
    }
}

void ServerPeers::Stopping() {
    Woken();  // the last answers
    for (auto& [client, peer] : m_peers) {
        peer.channel->Close();
    }
    m_peers.clear();
    m_check.reset();
    m_server.reset();
    os::MutexGuard lock(m_mutex);
    m_lines.clear();
}

void ServerPeers::OnConnection() {
    while (QLocalSocket* const socket = m_server->nextPendingConnection()) {
        socket->setParent(nullptr);
        std::unique_ptr<QLocalSocket> owned(socket);
        if (m_peers.size() >= kMostPeers) {
            LOG(WARNING) << "A connection is refused: " << m_peers.size() << " are open";
            continue;
        }
        const ClientId client = ++m_lastClient;
        auto channel = std::make_unique<Channel>(
            std::move(owned), m_role, Role::Client,
            Channel::Events{[this, client](long process) { OnReady(client, process); },
                            [this, client](Message& message) { return TakeCall(client, message); },
                            [this, client](const std::string& fault) { OnClosed(client, fault); }});
        Channel& started = *channel;
        Peer& peer = m_peers[client];
        peer.line = std::make_shared<Line>();
        peer.line->outlet = channel->Out();
        peer.channel = std::move(channel);
        started.Start();
    }
}

void ServerPeers::OnReady(ClientId client, long process) {
    Peer& peer = m_peers[client];
    peer.ready = true;
    {
        os::MutexGuard lock(m_mutex);
        m_lines[client] = peer.line;
    }
    if (m_came) {
        m_came(client, process);
    }
}

std::string ServerPeers::TakeCall(ClientId client, Message& message) {
    const auto* const call = std::get_if<CallMessage>(&message);
    if (call == nullptr) {
        return "an unexpected message";
    }
    const std::shared_ptr<Line> line = m_peers[client].line;
    if (line->running >= kMostRunning) {
        return "too many calls at the same time";
    }
    ++line->running;
    const auto handler = m_handlers.find(call->operation);
    if (handler == m_handlers.end()) {
        Answer(*line, {call->number, STATUS_NOT_SUPPORTED, {}});
        return "";
    }
    std::optional<Work> work = handler->second(client, SpanOf(call->arguments));
    if (!work) {
        return "malformed arguments of operation " + std::to_string(call->operation);
    }
    m_workers.Post([this, client, number = call->number, work = std::move(*work)] {
        RunCall(client, number, work);
    });
    return "";
}

void ServerPeers::OnClosed(ClientId client, const std::string& fault) {
    const auto found = m_peers.find(client);
    const bool cameBefore = found->second.ready;
    const std::uint64_t lost = found->second.line->lost;
    m_loop.DeleteLater(std::move(found->second.channel));
    m_peers.erase(found);
    {
        os::MutexGuard lock(m_mutex);
        m_lines.erase(client);
    }
    if (!fault.empty()) {
        LOG(WARNING) << "The connection of client " << client << " is closed: " << fault;
    }
    if (lost > 0) {
        LOG(WARNING) << "Client " << client << " has lost " << lost << " signals";
    }
    if (cameBefore && m_gone) {
        m_farewells.Post([this, client] { m_gone(client); });
    }
}

void ServerPeers::RunCall(ClientId client, std::uint32_t number, const Work& work) {
    const std::shared_ptr<Line> line = LineOf(client);
    if (line == nullptr) {
        return;
    }
    ReplyMessage reply{number, STATUS_FAILED, {}};
    if (!RunLogged("A call of a client", [&] { reply.status = work(reply.results); })) {
        reply = {number, STATUS_FAILED, {}};
    }
    Answer(*line, reply);
}

void ServerPeers::Answer(Line& line, const ReplyMessage& reply) {
    QByteArray message = Encoded(reply);
    if (static_cast<std::size_t>(message.size()) > kMostMessageBytes) {
        LOG(ERROR) << "The answer to a call is too long";
        message = Encoded(ReplyMessage{reply.number, STATUS_FAILED, {}});
    }
    --line.running;  // first, because the answer allows the client another call
    if (line.outlet->SendOrFail(message)) {
        m_loop.Wake();
    }
}

}  // namespace Korvex3Sync::link
