#include "platform/link/ServerPeers.h"

#include <chrono>

#include "platform/link/RunLogged.h"
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

bool ServerPeers::Send(ClientId client, const Signal& signal) {
    QByteArray message = Encoded(signal);
    const qint64 size = message.size();
    {
        os::MutexGuard lock(m_mutex);
        const auto found = m_backlogs.find(client);
        if (found == m_backlogs.end()) {
            return false;
        }
        Backlog& backlog = found->second;
        if (static_cast<std::size_t>(size) > kMostMessageBytes ||
            backlog.queued + backlog.unsent + size > kMostBacklog) {
            if (backlog.lost++ == 0) {
                LOG(WARNING) << "Client " << client << " does not keep up: signals are lost";
            }
            return false;
        }
        backlog.queued += size;
        m_outbox.push_back({client, std::move(message), false});
    }
    m_loop.Wake();
    return true;
}

bool ServerPeers::Close(std::chrono::milliseconds nominalLimit) {
    const auto end = std::chrono::steady_clock::now() + os::Scaled(nominalLimit);
    const bool callsEnded = m_workers.Close(end);
    const bool ended = m_farewells.Close(end) && callsEnded;
    m_loop.Stop();
    return ended;
}

void ServerPeers::Woken() {
    std::vector<Outgoing> outbox;
    {
        os::MutexGuard lock(m_mutex);
        outbox.swap(m_outbox);
        for (auto& [client, backlog] : m_backlogs) {
            backlog.queued = 0;
        }
    }
    for (const Outgoing& out : outbox) {
        const auto found = m_peers.find(out.client);
        if (found == m_peers.end()) {
            continue;
        }
        found->second.running -= out.isReply ? 1 : 0;
        found->second.channel->Send(out.message);
        NoteUnsent(out.client);
    }
}

void ServerPeers::NoteUnsent(ClientId client) {
    const auto found = m_peers.find(client);
    os::MutexGuard lock(m_mutex);
    const auto backlog = m_backlogs.find(client);
    if (found != m_peers.end() && backlog != m_backlogs.end()) {
        backlog->second.unsent = found->second.channel->Unsent();
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
    m_backlogs.clear();
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
                            [this, client](const std::string& fault) { OnClosed(client, fault); },
                            [this, client] { NoteUnsent(client); }});
        Channel& started = *channel;
        m_peers[client].channel = std::move(channel);
        started.Start();
    }
}

void ServerPeers::OnReady(ClientId client, long process) {
    m_peers[client].ready = true;
    {
        os::MutexGuard lock(m_mutex);
        m_backlogs[client];
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
    Peer& peer = m_peers[client];
    if (peer.running >= kMostRunning) {
        return "too many calls at the same time";
    }
    ++peer.running;
    const auto handler = m_handlers.find(call->operation);
    if (handler == m_handlers.end()) {
        Answer(client, {call->number, STATUS_NOT_SUPPORTED, {}});
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
    m_loop.DeleteLater(std::move(found->second.channel));
    m_peers.erase(found);
    std::uint64_t lost = 0;
    {
        os::MutexGuard lock(m_mutex);
        lost = cameBefore ? m_backlogs[client].lost : 0;
        m_backlogs.erase(client);
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
    {
        os::MutexGuard lock(m_mutex);
        if (!m_backlogs.contains(client)) {
            return;  // it has gone
        }
    }
    ReplyMessage reply{number, STATUS_FAILED, {}};
    if (!RunLogged("A call of a client", [&] { reply.status = work(reply.results); })) {
        reply = {number, STATUS_FAILED, {}};
    }
    Answer(client, std::move(reply));
}

void ServerPeers::Answer(ClientId client, ReplyMessage reply) {
    QByteArray message = Encoded(reply);
    if (static_cast<std::size_t>(message.size()) > kMostMessageBytes) {
        LOG(ERROR) << "An answer to client " << client << " is too long";
        message = Encoded(ReplyMessage{reply.number, STATUS_FAILED, {}});
    }
    {
        os::MutexGuard lock(m_mutex);
        m_outbox.push_back({client, std::move(message), true});
    }
    m_loop.Wake();
}

}  // namespace Korvex3Sync::link
