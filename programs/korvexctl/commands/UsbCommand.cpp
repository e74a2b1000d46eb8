#include <Korvex3Sync/Discovery.h>
#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/Drivers.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

Outcome RunUsb(Output& output) {
    Outcome outcome;
    outcome.figures["usb3"] = nullptr;
    bool onU3 = false;
    if (IsConnectedOnU3("", onU3) != STATUS_SUCCESS) {
        outcome.code = ExitCode::NotConnected;
        outcome.message = "no board found on USB: switch the head on and plug it in" + WhyNoBoard();
        return outcome;
    }
    outcome.figures["usb3"] = onU3;
    if (onU3) {
        output.Line("USB 3: yes");
        return outcome;
    }
    output.Line("USB 3: no");
    output.Line("  - use a USB 3 port of the computer (often blue, or marked SS)");
    output.Line("  - use the cable of the head or another USB 3 cable, not a longer one");
    output.Line("  - avoid hubs and front panel sockets, then plug the head in again");
    outcome.code = ExitCode::NotOnUsb3;
    outcome.message = "the head is connected, but not at USB 3 speed: images would be lost";
    return outcome;
}

}  // namespace

RunCommand AddUsb(CLI::App&) {
    return RunUsb;
}

}  // namespace Korvex3Sync::korvexctl
