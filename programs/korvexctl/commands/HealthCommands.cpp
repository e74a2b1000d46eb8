#include <CLI/CLI.hpp>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/health/Doctor.h"
#include "korvexctl/health/Selftest.h"
#include "korvexctl/health/StepRun.h"

namespace Korvex3Sync::korvexctl {

namespace {

using MakeOutcome = Outcome (*)(const std::vector<StepRow>& rows, bool interrupted);

/// The thread that hangs in a device, and the connection that it holds, end only with the process.
[[noreturn]] void EndWithHangingThread(const Outcome& outcome, Output& output) {
    output.Finish(outcome);
    Say(outcome.message);
    std::_Exit(static_cast<int>(outcome.code));
}

Outcome Examine(std::vector<Step> steps, const VerdictWords& words, MakeOutcome makeOutcome,
                Output& output) {
    const std::size_t width = NameWidth(steps);
    StepRun run(std::move(steps));
    Outcome outcome;
    {
        const Interrupt interrupt([&run] {
            run.Stop();
            return std::string("stopping after the current step and the clean-up");
        });
        const auto rows = run.Wait([&](const StepRow& row) {
            for (const std::string& line : RowLines(row, words, width)) {
                output.Line(line);
            }
        });
        outcome = makeOutcome(rows, interrupt.Came());
    }
    if (run.Hangs()) {
        EndWithHangingThread(outcome, output);
    }
    return outcome;
}

Outcome RunDoctor(const HeadChoice& head, Output& output) {
    DoctorOptions options;
    options.head = head;
    Outcome outcome = Examine(DoctorSteps(options), kDoctorWords, DoctorOutcome, output);
    if (outcome.code == ExitCode::Done) {
        output.Line("");
        output.Line("This machine and this head can scan.");
    }
    return outcome;
}

Outcome RunSelftest(const SelftestOptions& options, Output& output) {
    Outcome outcome = Examine(SelftestSteps(options), kSelftestWords, SelftestOutcome, output);
    output.Line("");
    output.Line(outcome.figures["passed"].dump() + " passed, " + outcome.figures["failed"].dump() +
                " failed, " + outcome.figures["not_run"].dump() + " not run");
    return outcome;
}

}  // namespace

RunCommand AddDoctor(CLI::App& command) {
    const auto head = std::make_shared<HeadChoice>();
    AddHeadOptions(command, *head, true);
    command.footer(
        "Runs a short scan with the laser lines on: look away from the head. Restores the "
        "settings "
        "that the head reports; light and trigger are off afterwards.");
    return [head](Output& output) { return RunDoctor(*head, output); };
}

RunCommand AddSelftest(CLI::App& command) {
    const auto options = std::make_shared<SelftestOptions>();
    AddHeadOptions(command, options->head, true);
    command.add_flag("--write-user-memory", options->writeUserMemory,
                     "Also write the last page of the user memory, and restore it");
    command.footer(
        "Sets everything that the head has, with lasers, projector and strobe on at times: look "
        "away from the head. Restores the settings that the head reports; light and trigger are "
        "off afterwards. A step that exceeds its time limit fails and ends the test.");
    return [options](Output& output) { return RunSelftest(*options, output); };
}

}  // namespace Korvex3Sync::korvexctl
