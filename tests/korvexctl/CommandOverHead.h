#pragma once

#include <string>
#include <vector>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/files/Output.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {

/// A head with small images, so that a test costs little.
virtual_head::HeadDescription SmallHeadDescription();

/// What a command of this process gave.
struct CommandResult {
    korvexctl::ExitCode code = korvexctl::ExitCode::Done;
    std::string message;
    nlohmann::json figures;
    std::string output;  // standard output
};

/// Runs a command in this process, where the virtual head's journal and faults are at hand. With
/// --json the output is what the command wrote while it ran; the document is in `figures`.
CommandResult RunHere(const std::vector<std::string>& arguments);

/// The commands that changed something in the board of the head, in order.
std::vector<std::string> BoardChanges(virtual_head::VirtualHead& head);

}  // namespace Korvex3Sync::tests
