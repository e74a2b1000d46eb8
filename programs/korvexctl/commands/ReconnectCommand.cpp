#include <Korvex3Sync/Connection.h>
#include <CLI/CLI.hpp>

#include <atomic>
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/cli/Signals.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/StatusWatch.h"

namespace Korvex3Sync::korvexctl {

namespace {

// The first poll of a board that is back comes within a second.
constexpr double kShortestTimeoutSeconds = 3;
constexpr double kLongestTimeoutSeconds = 600;

struct Asked {
    HeadChoice head;
    double timeoutSeconds = 30;
};

using Clock = std::chrono::steady_clock;

/// Only a good poll tells that the board is back.
bool WaitForAnswer(StatusWatch& watch, Clock::time_point end) {
    while (const auto poll = watch.Next(end)) {
        if (poll->status.Answers()) {
            return true;
        }
    }
    return false;
}

Outcome Reconnect(const Asked& asked, StatusWatch& watch, const std::atomic<bool>& interrupted,
                  Output& output) {
    const ConnectedHead head(asked.head, MuteBoard::Taken);
    watch.Watch(head.session);
    const auto begin = Clock::now();
    const RETSTATUS status = ReconnectDevice(head.Handle());
    if (status != STATUS_SUCCESS && !BoardAnswers(head.session)) {
        throw CommandError(ExitCode::NotConnected, std::string("reconnect: ") + kMuteBoard);
    }
    Require(status, "reconnect");
    // Reconnecting takes its own time, which nothing cuts short.
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(asked.timeoutSeconds));
    watch.Forget();
    const bool answers = WaitForAnswer(watch, end);
    if (interrupted) {
        throw CommandError(ExitCode::Interrupted, "interrupted");
    }
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();

    Outcome outcome;
    outcome.figures = {{"reconnected", true}, {"answers", answers}, {"took_ms", took}};
    if (!answers) {
        outcome.code = ExitCode::NotConnected;
        outcome.message = std::string("reconnected, but ") + kMuteBoard;
        return outcome;
    }
    output.Line("reconnected, and the board answers, after " + std::to_string(took) + " ms");
    return outcome;
}

Outcome RunReconnect(const Asked& asked, Output& output) {
    StatusWatch watch;
    std::atomic<bool> interrupted{false};
    const InterruptWatch interruptWatch([&] {
        interrupted = true;
        Say("interrupted; ends when the reconnection does; a second time ends at once");
        watch.Stop();
    });
    const Outcome outcome = OutcomeOf([&] { return Reconnect(asked, watch, interrupted, output); });
    return interrupted ? Interrupted(outcome) : outcome;
}

}  // namespace

RunCommand AddReconnect(CLI::App& command) {
    const auto asked = std::make_shared<Asked>();
    AddHeadOptions(command, asked->head, true);
    AddNumber(command, "--timeout", asked->timeoutSeconds, "S", kShortestTimeoutSeconds,
              kLongestTimeoutSeconds,
              "Give up when the board has not answered so many seconds after the devices were "
              "opened again; the opening itself takes up to ten seconds more");
    return [asked](Output& output) { return RunReconnect(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
