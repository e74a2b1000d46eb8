#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "platform/os/UsbDevices.h"

namespace Korvex3Sync::korvexctl {

class Output;

/// A synchronization board that is attached, whether or not it can be opened.
struct Board {
    std::string serial;  // for --board; empty: unknown
    std::string where;   // port and device node; empty: it is simulated
};

/// The board of the simulated head if one is requested; otherwise those that the system lists.
std::vector<Board> FindBoards(const os::UsbMachine& machine = os::UsbMachine::This());

/// [{"serial", "where"}, ...]; null where unknown.
nlohmann::json ToJson(const std::vector<Board>& boards);
/// One line each.
void Print(const std::vector<Board>& boards, Output& output);
/// "VH3267-0001, VH3267-0002", for a message; boards without a serial are left out.
std::string SerialsText(const std::vector<Board>& boards);

}  // namespace Korvex3Sync::korvexctl
