#pragma once

#include <exception>
#include <functional>
#include <utility>

#include "Korvex3Sync/Status.h"
#include "interface/LiveConnections.h"
#include "interface/Mode.h"
#include "platform/os/Cancellation.h"
#include "platform/os/Log.h"
#include "service/zr3DHandiSyncQT.h"

namespace Korvex3Sync {

inline constexpr char kInterfaceLog[] = "KorvexSyncControl";

// The frame of every exported call. `name` is the name of the export, for its entry record. The
// operation is called with the arguments of the export, unchanged. No exception crosses the
// interface: an operation that throws (std::bad_alloc) gives 0.
// A thread that is cancelled in an export ends after it, because the unwinding would end the
// process at NoThrow and at destructors.

/// Logs "<name> enter".
void LogEnter(const char* name);
/// Logs why an export returns 0 although no device refused.
void LogException(const char* what);

/// Runs a call; an exception becomes 0.
template <class Call>
RETSTATUS NoThrow(Call&& call) {
    try {
        return std::forward<Call>(call)();
    } catch (const std::exception& error) {
        LogException(error.what());
    } catch (...) {
        LogException("unknown exception");
    }
    return STATUS_FAILED;
}

// The targets of an export. They differ in what happens in service mode. A direct operation is a
// member of IManagerSync or of one of its parts, or takes an IManagerSync& as its first argument. A
// client operation takes a zr3DHandiSyncQT&.

/// In service mode the call goes to the service client.
template <class Direct, class Client>
struct Standard {
    Direct direct;
    Client client;
};
template <class Direct, class Client>
Standard(Direct, Client) -> Standard<Direct, Client>;

/// Returns 4 in service mode.
template <class Direct>
struct DirectOnly {
    Direct direct;
};
template <class Direct>
DirectOnly(Direct) -> DirectOnly<Direct>;

/// Ignores the mode.
template <class Direct>
struct AlwaysDirect {
    Direct direct;
};
template <class Direct>
AlwaysDirect(Direct) -> AlwaysDirect<Direct>;

/// Calls the service client. Returns 6 without one.
template <class Client, class... Args>
RETSTATUS ServiceCall(const Client& client, Args&&... args) {
    zr3DHandiSyncQT* const service = ServiceClient();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    return NoThrow([&] { return std::invoke(client, *service, std::forward<Args>(args)...); });
}

// The object that a direct operation is called on: the part that it is a member of, otherwise the
// manager.

template <class Operation>
IManagerSync& TargetOf(Operation, IManagerSync& manager) {
    return manager;
}
template <class Function>
BoardSession& TargetOf(Function BoardSession::*, IManagerSync& manager) {
    return manager.Board();
}
template <class Function>
CameraSet& TargetOf(Function CameraSet::*, IManagerSync& manager) {
    return manager.Cameras();
}
template <class Function>
FramePath& TargetOf(Function FramePath::*, IManagerSync& manager) {
    return manager.Frames();
}
template <class Function>
StatusPoller& TargetOf(Function StatusPoller::*, IManagerSync& manager) {
    return manager.Status();
}
template <class Function>
ColorSnapshot& TargetOf(Function ColorSnapshot::*, IManagerSync& manager) {
    return manager.Snapshots();
}

/// Calls a direct operation on a live connection. Returns 6 for any other handle.
template <class Direct, class... Args>
RETSTATUS DirectCall(const Direct& direct, void* handle, Args&&... args) {
    const CallInside inside(handle);
    if (!inside) {
        return STATUS_NOT_CONNECTED;
    }
    return NoThrow([&] {
        return std::invoke(direct, TargetOf(direct, inside.Manager()), std::forward<Args>(args)...);
    });
}

template <class Direct, class Client, class... Args>
RETSTATUS Dispatch(const Standard<Direct, Client>& target, void* handle, Args&&... args) {
    return ServiceMode() ? ServiceCall(target.client, handle, std::forward<Args>(args)...)
                         : DirectCall(target.direct, handle, std::forward<Args>(args)...);
}
template <class Direct, class... Args>
RETSTATUS Dispatch(const DirectOnly<Direct>& target, void* handle, Args&&... args) {
    return ServiceMode() ? STATUS_SYNCHRONISM_TYPE
                         : DirectCall(target.direct, handle, std::forward<Args>(args)...);
}
template <class Direct, class... Args>
RETSTATUS Dispatch(const AlwaysDirect<Direct>& target, void* handle, Args&&... args) {
    return DirectCall(target.direct, handle, std::forward<Args>(args)...);
}

/// The frame of every export with a handle.
template <class Target, class... Args>
RETSTATUS ExportCall(const Target& target, const char* name, void* handle, Args&&... args) {
    const os::CancellationOff cancellation;
    LogEnter(name);
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    return Dispatch(target, handle, std::forward<Args>(args)...);
}

}  // namespace Korvex3Sync
