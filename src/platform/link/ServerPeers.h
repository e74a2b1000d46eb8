#pragma once

#include <QLocalServer>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/link/Server.h"
#include "platform/link/WorkerPool.h"
#include "platform/link/channel/Channel.h"
#include "platform/link/channel/IoLoop.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::link {

/// The connections of a server, its I/O thread and its workers.
class ServerPeers {
public:
    using Work = Server::Work;
    using Handler = std::function<std::optional<Work>(ClientId, ByteSpan)>;

    ServerPeers(std::string path, Role role) : m_path(std::move(path)), m_role(role) {}

    // Before Listen.
    void AddHandler(std::uint16_t operation, Handler handler);
    void SetClientHandlers(std::function<void(ClientId, long)> came,
                           std::function<void(ClientId)> gone);

    bool Listen(std::string& reason);
    bool Send(ClientId client, const Signal& signal);
    bool Close(std::chrono::milliseconds nominalLimit);

private:
    /// What other threads use of a connection.
    struct Line {
        std::shared_ptr<Outlet> outlet;
        std::atomic<std::size_t> running = 0;  // calls without an answer yet
        std::atomic<std::uint64_t> lost = 0;   // signals
    };
    /// A connection, on the I/O thread.
    struct Peer {
        std::unique_ptr<Channel> channel;
        std::shared_ptr<Line> line;
        bool ready = false;
    };

    // On the I/O thread.
    void Started(std::string& reason);
    void Woken();
    void Stopping();
    bool Bind(std::string& reason);
    void CheckListening();
    void OnConnection();
    void OnReady(ClientId client, long process);
    std::string TakeCall(ClientId client, Message& message);
    void OnClosed(ClientId client, const std::string& fault);

    // On any thread.
    /// Null if the client has gone, or has not come yet.
    std::shared_ptr<Line> LineOf(ClientId client);
    void RunCall(ClientId client, std::uint32_t number, const Work& work);
    void Answer(Line& line, const ReplyMessage& reply);

    const std::string m_path;
    const Role m_role;
    std::map<std::uint16_t, Handler> m_handlers;
    std::function<void(ClientId, long)> m_came;
    std::function<void(ClientId)> m_gone;

    std::unique_ptr<QLocalServer> m_server;  // I/O thread only
    std::unique_ptr<QTimer> m_check;         // I/O thread only
    std::map<ClientId, Peer> m_peers;        // I/O thread only
    ClientId m_lastClient = 0;               // I/O thread only

    os::Mutex m_mutex;
    std::map<ClientId, std::shared_ptr<Line>> m_lines
        KORVEX_GUARDED_BY(m_mutex);  // of clients that came

    os::Event m_started;
    IoLoop m_loop;
    WorkerPool m_workers;
    WorkerPool m_farewells;  // never wait for calls that hang
};

}  // namespace Korvex3Sync::link
