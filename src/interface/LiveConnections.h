#pragma once

#include <memory>

#include "platform/os/Event.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

// The live connections of direct mode. A handle is the address of the connection's manager. It is
// looked up here before it is dereferenced, so a stale, closed or invented handle is simply not
// found.

/// One connection: its manager, and the calls that are running on it.
struct Connection {
    IManagerSync manager;
    int callsInside = 0;     // guarded by the table's mutex
    bool closing = false;    // guarded by the table's mutex
    os::Event lastCallLeft;  // set when it is closing and no call is running
};

/// The handle of a connection, live or not.
void* HandleOf(Connection& connection);

/// Adds the connection and takes it out of the pointer. Throws std::bad_alloc, and then does
/// neither.
void AddConnection(std::unique_ptr<Connection>& connection);

/// Removes the connection, so that its handle is unknown, ends the waits of running calls, and
/// returns when the last of them has ended. Blocks as long as they do. Null for a handle that is
/// not live: of two callers, one gets the connection. Does not throw.
std::unique_ptr<Connection> TakeConnection(void* handle);

/// Keeps a connection alive during one call.
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
    /// TakeConnection waits until this call has ended.
    Connection* const m_connection;
};

}  // namespace Korvex3Sync
