#include <Korvex3Sync/Connection.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/Drivers.h"
#include "korvexctl/head/Head.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct ResetArguments {
    HeadChoice head;
    bool fpga = false;
    bool device = false;
};

Outcome RunReset(const ResetArguments& asked, Output& output) {
    // A particular board needs a connection; any board does not.
    std::optional<ConnectedHead> head;
    if (!asked.head.board.empty()) {
        head.emplace(asked.head, MuteBoard::Taken);
    }
    void* const handle = head ? head->Handle() : nullptr;
    const RETSTATUS status = ReconnectDevice(handle, asked.fpga, asked.device);
    const std::string what = asked.device ? "device" : "FPGA";
    Outcome outcome;
    if (status != STATUS_SUCCESS) {
        const bool answers = status != STATUS_PROJECTOR && AskHead(asked.head.board).firmware;
        outcome.code = answers ? ExitCode::DeviceRefused : ExitCode::NotConnected;
        outcome.message =
            "reset the " + what + ": " + StatusText(status) + (answers ? "" : WhyNoBoard());
        return outcome;
    }
    outcome.figures["reset"] = asked.device ? "device" : "fpga";
    output.Line(what + " reset");
    return outcome;
}

}  // namespace

RunCommand AddReset(CLI::App& command) {
    const auto asked = std::make_shared<ResetArguments>();
    AddHeadOptions(command, asked->head, true);
    CLI::Option_group& what = *command.add_option_group("What to reset");
    what.add_flag("--fpga", asked->fpga, "Reset the FPGA only, which switches the trigger off");
    what.add_flag("--device", asked->device,
                  "Reset the whole board, which restores the power-on settings");
    what.require_option(1);
    return [asked](Output& output) { return RunReset(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
