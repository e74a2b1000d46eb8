#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/link/Client.h"
#include "platform/link/ClientConnection.h"
#include "platform/link/channel/IoLoop.h"
#include "platform/os/ActiveWait.h"
#include "platform/os/Condition.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::link {

/// The calls of a client: callers send them, the I/O thread brings the answers.
class ClientCalls {
public:
    ClientCalls(Client::Target target, Client::Sinks sinks);
    ~ClientCalls();
    ClientCalls(const ClientCalls&) = delete;
    ClientCalls& operator=(const ClientCalls&) = delete;

    RETSTATUS Call(const CalledOperation& operation, const QByteArray& arguments,
                   QByteArray& results);
    /// Ends the connection, because an answer was malformed.
    void RefuseAnswer(const char* name);

private:
    using Time = std::chrono::steady_clock::time_point;
    enum class State { Stopped, Waiting, Trying, Connected };

    struct Pending {
        os::Event ended;
        bool alone = false;                // no other call ran: a core is free to wait actively
        RETSTATUS status = STATUS_FAILED;  // with the results: written before `ended` is set
        QByteArray results;
    };

    /// Counts a caller, so that the destructor waits for it.
    class Inside;

    /// Registers a call and returns where to send it; null without a connection.
    std::shared_ptr<Outlet> Enter(const CalledOperation& operation, Time deadline,
                                  const std::shared_ptr<Pending>& pending, std::uint32_t& number);
    bool WaitForConnection(const CalledOperation& operation, Time deadline)
        KORVEX_REQUIRES(m_mutex);
    void StartIfStopped() KORVEX_REQUIRES(m_mutex);

    // On the I/O thread.
    void Started();
    void Woken();
    void Stopping();
    void SetState(State state, std::shared_ptr<Outlet> outlet = nullptr);
    std::string TakeMessage(Message& message);
    void TellSignal(const Signal& signal);
    void TakeReply(ReplyMessage& reply);
    void FailAll() KORVEX_REQUIRES(m_mutex);

    const Client::Target m_target;
    const Client::Sinks m_sinks;

    os::Mutex m_mutex;
    os::Condition m_changed;  // state, closing, callers
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Stopped;
    bool m_closing KORVEX_GUARDED_BY(m_mutex) = false;
    int m_callers KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_refusalLogged KORVEX_GUARDED_BY(m_mutex) = false;
    std::uint32_t m_lastNumber KORVEX_GUARDED_BY(m_mutex) = 0;
    std::map<std::uint32_t, std::shared_ptr<Pending>> m_pending KORVEX_GUARDED_BY(m_mutex);
    std::shared_ptr<Outlet> m_outlet KORVEX_GUARDED_BY(m_mutex);  // while connected
    std::string m_drop
        KORVEX_GUARDED_BY(m_mutex);  // not empty: end the connection, for this reason

    std::unique_ptr<ClientConnection> m_connection;  // I/O thread only
    os::ActiveWait m_activeWait;                     // for the answer to a call
    IoLoop m_loop;
};

}  // namespace Korvex3Sync::link
