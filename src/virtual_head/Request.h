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

/// Asks for the virtual head of this process. `request` is "default" or the path of a head file.
/// False, with one line in `error`, when the file is refused or its images cannot be read. A
/// request replaces the head of an earlier one: handles of that one fail from then on.
KORVEX_VIRTUAL_HEAD_API bool RequestVirtualHead(const std::string& request, std::string& error);
/// The same with a description of one's own.
KORVEX_VIRTUAL_HEAD_API bool RequestVirtualHead(const HeadDescription& description,
                                                std::string& error);
/// Asks for the head that the environment variable KORVEX_VIRTUAL_HEAD names, unless a request was
/// made before or the variable was looked at: a program that reports a refused head file itself
/// calls this first. False, with one line in `error`, when the file is refused; true without a
/// variable.
KORVEX_VIRTUAL_HEAD_API bool RequestHeadOfEnvironment(std::string& error);
/// Ends the request; from then on the platform libraries find nothing.
KORVEX_VIRTUAL_HEAD_API void WithdrawVirtualHead();

/// The requested head, or null. The first call looks at the environment variable
/// KORVEX_VIRTUAL_HEAD, unless a request was made before; a refused head file there is written to
/// the standard error stream once, and no head exists.
KORVEX_VIRTUAL_HEAD_API std::shared_ptr<VirtualHead> RequestedVirtualHead();
/// The serials of the boards that are plugged in at the requested head, one or none; nothing
/// without a head.
KORVEX_VIRTUAL_HEAD_API std::optional<std::vector<std::string>> SimulatedBoards();

}  // namespace Korvex3Sync::virtual_head
