#include <Korvex3Sync/Connection.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/Drivers.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

// Without a connection: a failed query through a connection closes it.
Outcome RunFirmware(const std::string& board, Output& output) {
    Outcome outcome;
    outcome.figures["firmware"] = nullptr;
    std::string version;
    const RETSTATUS status = GetFirewareVersion(board.c_str(), version);
    if (status != STATUS_SUCCESS) {
        outcome.code = ExitCode::NotConnected;
        outcome.message = "cannot read the firmware version" +
                          (board.empty() ? "" : " of board " + board) + ": " + StatusText(status) +
                          WhyNoBoard();
        return outcome;
    }
    outcome.figures["firmware"] = version;
    output.Line("firmware " + version);
    return outcome;
}

}  // namespace

RunCommand AddFirmware(CLI::App& command) {
    const auto board = std::make_shared<std::string>();
    AddBoardOption(command, *board);
    return [board](Output& output) { return RunFirmware(*board, output); };
}

}  // namespace Korvex3Sync::korvexctl
