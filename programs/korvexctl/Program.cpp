#include "korvexctl/Program.h"

#include <exception>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "korvexctl/CommandLine.h"
#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/files/Logging.h"
#include "korvexctl/files/QtMessages.h"
#include "korvexctl/files/StandardOutput.h"
#include "korvexctl/service/ServiceSwitch.h"
#include "platform/os/InterruptWatch.h"
#include "platform/os/Print.h"
#include "platform/os/StandardOutput.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

namespace {

void RequestHead(const std::string& asked) {
    std::string error;
    const bool made = asked.empty() ? virtual_head::RequestHeadOfEnvironment(error)
                                    : virtual_head::RequestVirtualHead(asked, error);
    if (!made) {
        throw CommandError(ExitCode::HeadRefused, error);
    }
}

Outcome RunAsked(const CommandLine& line, Output& output) {
    if (line.service && !line.notInServiceMode.empty()) {
        throw CommandError(ExitCode::NotInServiceMode,
                           "not available with --service: " + line.notInServiceMode);
    }
    if (line.uses != Uses::Nothing) {
        RequestHead(line.virtualHead);
    }
    const EndingOnInterrupt ending;
    return ending.OutcomeOf([&] {
        std::unique_ptr<QCoreApplication> application;
        if (line.service && line.uses == Uses::Head) {
            application = SwitchToService(line.virtualHead, output.ShowsProgress());
        }
        return line.run(output);
    });
}

Outcome RunLogged(const CommandLine& line, StandardOutput& standardOutput, Output& output) {
    standardOutput.ShowPrints(line.logFile);
    const Logging logging("korvexctl", standardOutput, line.verbose, !line.logFile.empty());
    const QtMessages messages(standardOutput, line.verbose);
    return RunAsked(line, output);
}

Outcome Run(const CommandLineResult& asked) {
    const CommandLine& line = asked.commandLine;
    StandardOutput standardOutput(line.verbose);
    if (!asked.run && !asked.badUsage) {
        standardOutput.Write(asked.text);
        return {};
    }
    // A progress bar would mix with the lines of the library.
    Output output(standardOutput, line.json, os::StandardErrorTakesEscapes() && !line.verbose);
    Outcome outcome = OutcomeOf([&] {
        if (asked.badUsage) {
            throw CommandError(ExitCode::Usage, asked.text);
        }
        return RunLogged(line, standardOutput, output);
    });
    output.Finish(outcome);
    return outcome;
}

}  // namespace

int RunProgram(int count, const char* const* arguments) noexcept {
    try {
        os::TurnWriteSignalsIntoErrors();
        os::ShowUtf8();
        const Outcome outcome = OutcomeOf([&] {
            return Run(
                ReadCommandLine(count, arguments, os::TerminalColumns().value_or(kUsualWidth)));
        });
        if (outcome.code != ExitCode::Done && !outcome.message.empty()) {
            Say(outcome.message);
        }
        return static_cast<int>(outcome.code);
    } catch (...) {
        // No memory for a message.
        os::PrintError("korvexctl: unexpected error\n");
        return static_cast<int>(ExitCode::Unexpected);
    }
}

}  // namespace Korvex3Sync::korvexctl
