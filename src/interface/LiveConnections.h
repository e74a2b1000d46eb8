#pragma once

#include <memory>

#include "platform/os/Event.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

// The live connections of direct mode. A handle is the address of the connection's manager, and it
// is looked up here before it is followed: a stale, closed or made-up one is simply not found.

/// One connection: its manager, and the calls that are inside it.
struct Connection {
    IManagerSync manager;
    int callsInside = 0;     // guarded by the table's mutex
    bool closing = false;    // guarded by the table's mutex
    os::Event lastCallLeft;  // set once it is closing and no call is inside
};

/// The handle of a connection, live or not.
void* HandleOf(Connection& connection);

/// Makes the connection live and empties the pointer. Throws std::bad_alloc; then neither happens.
void AddConnection(std::unique_ptr<Connection>& connection);

/// Makes the handle unknown, ends the waits of the calls that are still inside, and returns when
/// the last of them has left. Null for a handle that is not live: of two callers, one gets the
/// connection. Blocks as long as those calls do. Throws nothing.
std::unique_ptr<Connection> TakeConnection(void* handle);

/// Keeps a connection alive for one call.
class CallInside {
public:
    explicit CallInside(void* handle);
    ~CallInside();
    CallInside(const CallInside&) = delete;
    CallInside& operator=(const CallInside&) = delete;

    /// False for a handle that is not live.
    explicit operator bool() const { return m_connection != nullptr; }
    IManagerSync& Manager() const { return m_connection->manager; }

private:
    /// The caller that took it out of the table waits until this call has left.
    Connection* const m_connection;
};

}  // namespace Korvex3Sync
