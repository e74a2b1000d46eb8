#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "Korvex3Sync/Status.h"
#include "platform/link/Operations.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::link {

class ClientCalls;

/// What a call needs to know of its operation.
struct CalledOperation {
    std::uint16_t number;
    const char* name;
    std::chrono::milliseconds limit;
    bool waitsForConnection;
};

/// The end of the link that calls. Thread-safe.
///
/// A thread of its own keeps a connection: it finds the service through the hub, and connects again
/// within 250 ms when hub and service are back. It needs a QCoreApplication, but not the
/// application's event loop.
class Client {
public:
    enum class Target {
        Service,  ///< the device service, which the hub knows
        Hub       ///< the hub itself
    };

    /// Called on the client's own thread; must not block and must not call.
    struct Sinks {
        std::function<void(const Signal&)> signal;
        /// The connection came (true) or was lost (false).
        std::function<void(bool)> connection;
    };

    explicit Client(Target target = Target::Service, Sinks sinks = {});
    /// Calls that are running fail, and are waited for. Afterwards no sink is called. Must not run
    /// on the client's own thread.
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Calls an operation and waits for its answer. `out` is changed only with STATUS_SUCCESS.
    ///
    /// STATUS_FAILED if there is no answer within the limit of the operation, if the connection is
    /// lost, or if there is none: then the call waits at most 500 ms for an attempt that is under
    /// way. `getCamerasInformation` waits for a connection until its limit. STATUS_PARAMETER if the
    /// arguments are longer than a message. A call on the client's own thread fails at once.
    template <class Op>
    RETSTATUS Call(const typename Op::In& in, typename Op::Out& out) {
        ByteWriter arguments;
        Write(arguments, in);
        QByteArray results;
        const RETSTATUS status =
            CallRaw({Op::kNumber, Op::kName, Op::kLimit, std::is_same_v<Op, GetCamerasInformation>},
                    arguments.Bytes(), results);
        if (status != STATUS_SUCCESS) {
            return status;
        }
        typename Op::Out read;
        if (!ReadWhole(SpanOf(results), read)) {
            RefuseAnswer(Op::kName);
            return STATUS_FAILED;
        }
        out = std::move(read);
        return STATUS_SUCCESS;
    }

private:
    RETSTATUS CallRaw(const CalledOperation& operation, const QByteArray& arguments,
                      QByteArray& results);
    void RefuseAnswer(const char* name);

    const std::unique_ptr<ClientCalls> m_calls;
};

}  // namespace Korvex3Sync::link
