#pragma once

#include <functional>
#include <span>

#include "korvexctl/files/Output.h"

namespace CLI {
class App;
}

namespace Korvex3Sync::korvexctl {

/// Runs a command with the options that were read. Returns how it ended, or throws CommandError
/// when it could not start.
using RunCommand = std::function<Outcome(Output& output)>;

/// What a command works with.
enum class Uses {
    Head,          ///< the cameras, or a connection; with --service through the device service
    HeadDirectly,  ///< the board, always in this process
    Nothing        ///< no head: a refused head file does not matter
};

/// One command of the program.
struct Command {
    const char* name;
    const char* help;
    /// Adds the command's options to `command` and returns what runs it. The options belong to the
    /// returned function, and are filled in before it is called.
    RunCommand (*add)(CLI::App& command);
    Uses uses = Uses::Head;
    /// Why it is not available with --service; empty if it is.
    const char* notInServiceMode = "";
};

/// All commands, in the order of the help.
std::span<const Command> Commands();

// The entries of the table, each in its own file.

RunCommand AddList(CLI::App& command);
RunCommand AddInfo(CLI::App& command);
RunCommand AddScan(CLI::App& command);
RunCommand AddStatus(CLI::App& command);
RunCommand AddGet(CLI::App& command);
RunCommand AddSet(CLI::App& command);
RunCommand AddProfile(CLI::App& command);
RunCommand AddSnap(CLI::App& command);
RunCommand AddSnapIr(CLI::App& command);
RunCommand AddFirmware(CLI::App& command);
RunCommand AddReset(CLI::App& command);
RunCommand AddReconnect(CLI::App& command);
RunCommand AddUserInfo(CLI::App& command);
RunCommand AddDistance(CLI::App& command);
RunCommand AddUsb(CLI::App& command);
RunCommand AddDoctor(CLI::App& command);
RunCommand AddSelftest(CLI::App& command);
RunCommand AddService(CLI::App& command);
RunCommand AddVirtual(CLI::App& command);
RunCommand AddHelp(CLI::App& command);

}  // namespace Korvex3Sync::korvexctl
