#pragma once

#include <QString>

#include <cstdint>
#include <vector>

#include "platform/link/Operations.h"

namespace Korvex3Sync::link {

/// The name under which the device service is registered.
inline constexpr const char* kServiceName = "ZrSyncService";
/// The names of the sockets in the runtime folder.
inline constexpr const char* kHubSocket = "hub";
inline constexpr const char* kServiceSocket = "service";

/// A service that is registered at the hub.
struct Registration {
    QString service;      ///< the name that clients look up
    QString socket;       ///< path of its socket
    QString instance;     ///< different for each start of a service
    qint64 process = 0;   ///< process id
    quint32 version = 0;  ///< protocol version
};

void Write(ByteWriter& out, const Registration& registration);
bool Read(ByteReader& in, Registration& registration);

/// A hub at one moment.
struct HubState {
    QString version;
    qint64 process = 0;
    qint64 uptimeMs = 0;
    std::vector<Registration> services;
};

void Write(ByteWriter& out, const HubState& state);
bool Read(ByteReader& in, HubState& state);

/// Registers a service for as long as this connection lasts. It takes the place of an earlier one
/// of the same name until it ends.
struct RegisterService : Operation<200, Values<Registration>, Values<>, 2'000> {
    static constexpr const char* kName = "registerService";
};
/// Returns STATUS_NOT_CONNECTED if no service of this name is registered.
struct LookUpService : Operation<201, Values<QString>, Values<Registration>, 2'000> {
    static constexpr const char* kName = "lookUpService";
};
struct GetHubState : Operation<202, Values<>, Values<HubState>, 2'000> {
    static constexpr const char* kName = "getHubState";
};
/// Asks the hub to end; it answers first.
struct StopHub : Operation<203, Values<>, Values<>, 2'000> {
    static constexpr const char* kName = "stopHub";
};

}  // namespace Korvex3Sync::link
