#include "interface/LiveConnections.h"

#include <map>
#include <utility>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {
namespace {

struct Table {
    os::Mutex mutex;
    std::map<void*, std::unique_ptr<Connection>> live KORVEX_GUARDED_BY(mutex);
};

/// Never destroyed: a connection that the application leaves open lives as long as the process.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

Connection* Enter(void* handle) {
    Table& table = TheTable();
    os::MutexGuard lock(table.mutex);
    const auto found = table.live.find(handle);
    if (found == table.live.end()) {
        return nullptr;
    }
    ++found->second->callsInside;
    return found->second.get();
}

void Leave(Connection& connection) {
    os::MutexGuard lock(TheTable().mutex);
    if (--connection.callsInside == 0 && connection.closing) {
        connection.lastCallLeft.Set();
    }
}

}  // namespace

void* HandleOf(Connection& connection) {
    return &connection.manager;
}

void AddConnection(std::unique_ptr<Connection>& connection) {
    Table& table = TheTable();
    os::MutexGuard lock(table.mutex);
    table.live[HandleOf(*connection)] = std::move(connection);
}

std::unique_ptr<Connection> TakeConnection(void* handle) {
    Table& table = TheTable();
    std::unique_ptr<Connection> connection;
    {
        os::MutexGuard lock(table.mutex);
        auto node = table.live.extract(handle);
        if (node.empty()) {
            return nullptr;
        }
        connection = std::move(node.mapped());
        connection->closing = true;
        if (connection->callsInside == 0) {
            connection->lastCallLeft.Set();
        }
    }
    connection->manager.RequestStop();
    connection->lastCallLeft.Wait();
    return connection;
}

CallInside::CallInside(void* handle) : m_connection(Enter(handle)) {}

CallInside::~CallInside() {
    if (m_connection) {
        Leave(*m_connection);
    }
}

}  // namespace Korvex3Sync
