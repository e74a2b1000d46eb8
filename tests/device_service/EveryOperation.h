#pragma once

#include <SyncInterface.h>

#include <functional>
#include <string>
#include <vector>

namespace Korvex3Sync::tests {

/// One operation, once through the device service and once in direct mode, with the same arguments.
/// Each gives the status and the outputs as text: "7: 1280, 1024".
struct Operation {
    const char* name;
    std::function<std::string(SyncInterface& service, qint64 id)> throughService;
    std::function<std::string(void* const& handle)> direct;
};

/// Every operation that takes the id of a device and keeps it, in an order in which getters follow
/// their setters. The last ones close the cameras, reconnect, and fail.
const std::vector<Operation>& EveryOperation();

}  // namespace Korvex3Sync::tests
