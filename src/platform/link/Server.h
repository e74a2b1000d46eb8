#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Korvex3Sync/Status.h"
#include "platform/link/Operations.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::link {

class ServerPeers;

/// A client's connection; never 0, never used again.
using ClientId = std::uint64_t;

/// The end of the link that answers. Thread-safe after Listen.
///
/// A thread of its own keeps the connections; calls run on a pool of at most 16 threads, so that a
/// slow call delays no other. It needs a QCoreApplication, but not the application's event loop.
class Server {
public:
    Server(std::string socketPath, Role role);
    /// Closes, and waits without limit for handlers that are still running.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Sets what carries out an operation, before Listen. It runs on a thread of the pool, for
    /// several calls at the same time, also of one client. It changes `out` only if it returns
    /// STATUS_SUCCESS. A call of an operation without a handler gets STATUS_NOT_SUPPORTED, a
    /// handler that throws gives STATUS_FAILED.
    template <class Op>
    void On(std::function<RETSTATUS(ClientId, const typename Op::In&, typename Op::Out&)> handler) {
        AddHandler(Op::kNumber, [handler = std::move(handler)](ClientId client,
                                                               ByteSpan arguments) {
            typename Op::In in;
            if (!ReadWhole(arguments, in)) {
                return std::optional<Work>();
            }
            return std::optional<Work>([handler, client, in = std::move(in)](QByteArray& results) {
                typename Op::Out out;
                const RETSTATUS status = handler(client, in, out);
                if (status == STATUS_SUCCESS) {
                    ByteWriter bytes;
                    Write(bytes, out);
                    results = bytes.Bytes();
                }
                return status;
            });
        });
    }

    /// Sets the functions that are called for clients, before Listen.
    ///
    /// `came` gets the client and its process id before its first call, on the server's own thread:
    /// it must not block. `gone` runs on a thread of the pool and may block. No call of the client
    /// starts after `gone` has been posted, but calls that are running may end later: a handler
    /// that gives a client something has to check afterwards whether the client has gone. Clients
    /// that are connected when the server closes are not reported.
    void OnClient(std::function<void(ClientId, long process)> came,
                  std::function<void(ClientId)> gone);

    /// Opens the socket. False, with a reason, if that fails or another process listens on it; what
    /// a dead process left is replaced.
    bool Listen(std::string& reason);

    /// Sends a signal to a client. Any thread; does not block. False if the client has gone, or if
    /// so much is waiting for it that this signal is lost. The server logs how many were lost.
    bool Send(ClientId client, const Signal& signal);

    /// Ends all connections. Calls that wait are dropped, and running ones may finish and answer
    /// within the nominal limit. False if one still runs then; otherwise no handler runs
    /// afterwards.
    bool Close(std::chrono::milliseconds nominalLimit = std::chrono::seconds(5));

private:
    /// A call that has been read: carries it out.
    using Work = std::function<RETSTATUS(QByteArray& results)>;
    friend class ServerPeers;

    void AddHandler(std::uint16_t operation,
                    std::function<std::optional<Work>(ClientId, ByteSpan)> handler);

    const std::unique_ptr<ServerPeers> m_peers;
};

}  // namespace Korvex3Sync::link
