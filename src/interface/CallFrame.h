#pragma once

#include <exception>
#include <functional>
#include <utility>

#include "Korvex3Sync/Status.h"
#include "interface/Mode.h"
#include "platform/os/Log.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

inline constexpr char kInterfaceLog[] = "KorvexSyncControl";

// The frame of every exported call. `name` is the export's, for its entry
// record. An operation is a member of the manager (or anything that takes a manager first), called
// with the export's arguments as they came. Nothing is thrown across the interface: what an
// operation throws (memory that is not there) becomes 0.

/// Records "<name> enter".
void LogEnter(const char* name);
/// Records why an export answers 0 though no device refused.
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

inline IManagerSync& ManagerOf(void* handle) {
    return *static_cast<IManagerSync*>(handle);
}

/// How an export treats service mode. In each variant a null handle is answered with 6 first.
enum class Variant {
    Standard,     ///< the service client takes the call
    DirectOnly,   ///< 4 in service mode
    AlwaysDirect  ///< the mode is not looked at
};

/// What an export that goes to the service client answers: 6 without a client.
RETSTATUS ServiceCall();

/// The frame of every export with a handle.
template <class Operation, class... Args>
RETSTATUS ExportCall(Variant variant, const char* name, void* handle, Operation operation,
                     Args&&... args) {
    LogEnter(name);
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (ServiceMode() && variant != Variant::AlwaysDirect) {
        return variant == Variant::DirectOnly ? STATUS_SYNCHRONISM_TYPE : ServiceCall();
    }
    return NoThrow(
        [&] { return std::invoke(operation, ManagerOf(handle), std::forward<Args>(args)...); });
}

}  // namespace Korvex3Sync
