#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtual_head/base/Export.h"
#include "virtual_head/config/HeadDescription.h"
#include "virtual_head/config/HeadFileText.h"

namespace Korvex3Sync::virtual_head {

class VirtualHead;

/// Requests the virtual head of this process. `request` is "default" or the path of a head file in
/// UTF-8. If the file is refused or its images cannot be read, returns false with one line in
/// `error`. A new request replaces the previous head, whose handles fail from then on.
KORVEX_VIRTUAL_HEAD_API bool RequestVirtualHead(const std::string& request, std::string& error);
/// Requests a head with this description.
KORVEX_VIRTUAL_HEAD_API bool RequestVirtualHead(const HeadDescription& description,
                                                std::string& error);
/// Requests the head that the environment variable KORVEX_VIRTUAL_HEAD names, unless there was a
/// request or the variable has been read before. A program that reports a refused head file itself
/// calls this first. If the file is refused, returns false with one line in `error`; returns true
/// if the variable is not set.
KORVEX_VIRTUAL_HEAD_API bool RequestHeadOfEnvironment(std::string& error);
/// Withdraws the request; from then on the platform libraries look for real devices.
KORVEX_VIRTUAL_HEAD_API void WithdrawVirtualHead();

/// The requested head, or null. The first call reads the environment variable KORVEX_VIRTUAL_HEAD,
/// unless there was a request before. If its head file is refused, the reason is printed to
/// standard error once, and there is no head.
KORVEX_VIRTUAL_HEAD_API std::shared_ptr<VirtualHead> RequestedVirtualHead();
/// Whether the platform libraries may look for real devices: no virtual head is requested, and
/// KORVEX_VIRTUAL_HEAD does not name one that was refused. A program that was meant to simulate
/// never moves a real device.
KORVEX_VIRTUAL_HEAD_API bool MayUseRealDevices();
/// The serials of the boards that are plugged in at the requested head: one or none. Nothing
/// without a head.
KORVEX_VIRTUAL_HEAD_API std::optional<std::vector<std::string>> SimulatedBoards();

}  // namespace Korvex3Sync::virtual_head
