#include <Korvex3Sync/Connection.h>
#include <CLI/CLI.hpp>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/StatusWatch.h"

namespace Korvex3Sync::korvexctl {

namespace {

// A board answers its first poll within a second.
constexpr double kShortestReconnectSeconds = 3;
constexpr double kLongestReconnectSeconds = 600;

struct ReconnectArguments {
    HeadChoice head;
    double timeoutSeconds = 30;
};

using Clock = std::chrono::steady_clock;

Outcome Reconnect(const ReconnectArguments& asked, StatusWatch& watch, const Interrupt& interrupt,
                  Output& output) {
    const ConnectedHead head(asked.head, MuteBoard::Taken);
    watch.Watch(head.session);
    const auto begin = Clock::now();
    const RETSTATUS status = ReconnectDevice(head.Handle());
    if (status != STATUS_SUCCESS && !BoardAnswers(head.session)) {
        throw CommandError(ExitCode::NotConnected, std::string("reconnect: ") + kMuteBoard);
    }
    Require(status, "reconnect");
    // The time for reopening is not included.
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(asked.timeoutSeconds));
    watch.Forget();
    // Only a good poll shows that the board is back.
    const bool answers = watch.WaitForAnswer(end);
    interrupt.ThrowIfCame();
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();

    Outcome outcome;
    *outcome.figures = {{"reconnected", true}, {"answers", answers}, {"took_ms", took}};
    if (!answers) {
        outcome.code = ExitCode::NotConnected;
        outcome.message = std::string("reconnected, but ") + kMuteBoard;
        return outcome;
    }
    output.Line("reconnected; the board answered after " + std::to_string(took) + " ms");
    return outcome;
}

Outcome RunReconnect(const ReconnectArguments& asked, Output& output) {
    StatusWatch watch;
    const Interrupt interrupt([&watch] {
        watch.Stop();
        return std::string("stopping when the reconnection has finished");
    });
    return interrupt.OutcomeOf([&] { return Reconnect(asked, watch, interrupt, output); });
}

}  // namespace

RunCommand AddReconnect(CLI::App& command) {
    const auto asked = std::make_shared<ReconnectArguments>();
    AddHeadOptions(command, asked->head, true);
    AddNumber(command, "--timeout", asked->timeoutSeconds, "S", kShortestReconnectSeconds,
              kLongestReconnectSeconds,
              "Give up when the board has not answered this many seconds after the devices were "
              "reopened; reopening takes up to ten seconds more");
    return [asked](Output& output) { return RunReconnect(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
