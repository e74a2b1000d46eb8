#include "platform/link/ClientCalls.h"

#include <algorithm>
#include <utility>

#include "platform/link/channel/RunLogged.h"
#include "platform/os/Clock.h"
#include "platform/os/Log.h"

namespace Korvex3Sync::link {
namespace {

/// How long a call waits for an attempt to connect that is under way.
constexpr std::chrono::milliseconds kWaitForAttempt{500};
/// What a call has in front of its arguments, rounded up.
constexpr std::size_t kCallHeadBytes = 16;

}  // namespace

class ClientCalls::Inside {
public:
    explicit Inside(ClientCalls& calls) : m_calls(calls) {
        os::MutexGuard lock(m_calls.m_mutex);
        ++m_calls.m_callers;
    }
    ~Inside() {
        os::MutexGuard lock(m_calls.m_mutex);
        if (--m_calls.m_callers == 0) {
            m_calls.m_changed.NotifyAll();
        }
    }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    ClientCalls& m_calls;
};

ClientCalls::ClientCalls(Client::Target target, Client::Sinks sinks)
    : m_target(target), m_sinks(std::move(sinks)) {
    os::MutexGuard lock(m_mutex);
    StartIfStopped();
}

ClientCalls::~ClientCalls() {
    {
        os::MutexGuard lock(m_mutex);
        m_closing = true;
        m_changed.NotifyAll();
    }
    m_loop.Stop();
    os::MutexGuard lock(m_mutex);
    FailAll();
    while (m_callers > 0) {
        m_changed.Wait(m_mutex);
    }
}

RETSTATUS ClientCalls::Call(const CalledOperation& operation, const QByteArray& arguments,
                            QByteArray& results) {
    if (m_loop.IsCurrent()) {
        LOG(ERROR) << operation.name << ": must not be called on the thread of the link";
        return STATUS_FAILED;
    }
    if (SpanOf(arguments).size() + kCallHeadBytes > kMostMessageBytes) {
        LOG(ERROR) << operation.name << ": the arguments are too long (" << arguments.size()
                   << " bytes)";
        return STATUS_PARAMETER;
    }
    const Inside inside(*this);
    const Time deadline = std::chrono::steady_clock::now() + os::Scaled(operation.limit);
    const auto pending = std::make_shared<Pending>();
    std::uint32_t number = 0;
    const std::shared_ptr<Outlet> outlet = Enter(operation, deadline, pending, number);
    if (outlet == nullptr) {
        return STATUS_FAILED;
    }
    if (outlet->SendOrFail(Encoded(CallMessage{number, operation.number, arguments}))) {
        m_loop.Wake();
    }
    if (pending->alone) {
        m_activeWait.Wait([&pending] { return pending->ended.IsSet(); });
    }
    if (pending->ended.WaitUntil(deadline) == os::WaitResult::TimedOut) {
        os::MutexGuard lock(m_mutex);
        // An answer that arrives from now on finds nobody.
        if (m_pending.erase(number) > 0) {
            LOG(WARNING) << operation.name << ": no answer within " << operation.limit.count()
                         << " ms";
            return STATUS_FAILED;
        }
    }
    results = std::move(pending->results);
    return pending->status;
}

void ClientCalls::RefuseAnswer(const char* name) {
    {
        os::MutexGuard lock(m_mutex);
        m_drop = std::string("a malformed answer to ") + name;
    }
    m_loop.Wake();
}

std::shared_ptr<Outlet> ClientCalls::Enter(const CalledOperation& operation, Time deadline,
                                           const std::shared_ptr<Pending>& pending,
                                           std::uint32_t& number) {
    os::MutexGuard lock(m_mutex);
    if (m_closing) {
        return nullptr;
    }
    StartIfStopped();
    if (!WaitForConnection(operation, deadline)) {
        return nullptr;
    }
    number = ++m_lastNumber;
    m_pending[number] = pending;
    pending->alone = m_callers == 1;
    return m_outlet;
}

bool ClientCalls::WaitForConnection(const CalledOperation& operation, Time deadline) {
    const Time end =
        operation.waitsForConnection
            ? deadline
            : std::min(deadline, std::chrono::steady_clock::now() + os::Scaled(kWaitForAttempt));
    const bool patient = operation.waitsForConnection;
    while (!m_closing && (m_state == State::Trying || (patient && m_state == State::Waiting))) {
        if (!m_changed.WaitUntil(m_mutex, end)) {
            break;
        }
    }
    return !m_closing && m_state == State::Connected;
}

void ClientCalls::StartIfStopped() {
    if (m_state != State::Stopped) {
        return;
    }
    std::string reason;
    if (m_loop.Start({[this] { Started(); }, [this] { Woken(); }, [this] { Stopping(); }},
                     reason)) {
        m_state = State::Trying;
        m_refusalLogged = false;
    } else if (!m_refusalLogged) {
        m_refusalLogged = true;
        LOG(ERROR) << "Cannot connect to the device service: " << reason;
    }
}

void ClientCalls::Started() {
    m_connection = std::make_unique<ClientConnection>(
        m_loop, m_target,
        ClientConnection::Events{[this] { SetState(State::Trying); },
                                 [this] { SetState(State::Waiting); },
                                 [this](const std::shared_ptr<Outlet>& outlet) {
                                     SetState(State::Connected, outlet);
                                     if (m_sinks.connection) {
                                         m_sinks.connection(true);
                                     }
                                 },
                                 [this] {
                                     SetState(State::Waiting);
                                     if (m_sinks.connection) {
                                         m_sinks.connection(false);
                                     }
                                 },
                                 [this](Message& message) { return TakeMessage(message); }});
}

void ClientCalls::Woken() {
    if (!m_connection) {
        return;  // no memory at the start
    }
    std::string drop;
    {
        os::MutexGuard lock(m_mutex);
        drop.swap(m_drop);
    }
    m_connection->Flush();
    if (!drop.empty()) {
        m_connection->Drop(drop);
    }
}

void ClientCalls::Stopping() {
    m_connection.reset();
    SetState(State::Stopped);
}

void ClientCalls::SetState(State state, std::shared_ptr<Outlet> outlet) {
    os::MutexGuard lock(m_mutex);
    if (m_state == State::Connected) {
        FailAll();
    }
    m_state = state;
    m_outlet = std::move(outlet);
    m_changed.NotifyAll();
}

std::string ClientCalls::TakeMessage(Message& message) {
    if (auto* const reply = std::get_if<ReplyMessage>(&message)) {
        TakeReply(*reply);
    } else if (const auto* const signal = std::get_if<Signal>(&message)) {
        TellSignal(*signal);
    } else {
        return "an unexpected message";
    }
    return "";
}

void ClientCalls::TellSignal(const Signal& signal) {
    if (m_sinks.signal) {
        RunLogged("A receiver of a signal of the device service", [&] { m_sinks.signal(signal); });
    }
}

void ClientCalls::TakeReply(ReplyMessage& reply) {
    std::shared_ptr<Pending> pending;
    {
        os::MutexGuard lock(m_mutex);
        const auto found = m_pending.find(reply.number);
        if (found == m_pending.end()) {
            return;  // the caller has given up
        }
        pending = std::move(found->second);
        m_pending.erase(found);
        pending->status = reply.status;
        pending->results = reply.results;
    }
    // Without the mutex, which the caller takes next.
    pending->ended.Set();
}

void ClientCalls::FailAll() {
    for (const auto& [number, pending] : m_pending) {
        pending->ended.Set();
    }
    m_pending.clear();
}

}  // namespace Korvex3Sync::link
