#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/commands/StatusReport.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/ModeOption.h"
#include "korvexctl/head/StatusWatch.h"
#include "korvexctl/scan/HeadRecovery.h"
#include "korvexctl/scan/ScanLosses.h"
#include "korvexctl/scan/Trigger.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr double kShortestWatchSeconds = 0.1;
constexpr double kLongestWatchSeconds = 1e7;

struct StatusArguments {
    HeadChoice head;
    std::optional<double> seconds;  // without: until Ctrl-C
    std::optional<CAMERA_TRIGGER_MODE> mode;
};

// The sets are only counted. The context must not be null.
void TakeImageSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
                  std::vector<int>&) {}

/// When a board that does not answer is reconnected: after it was silent for a while, since it may
/// come back by itself, and again and again.
class RecoverySchedule {
public:
    bool IsDue(const BoardStatus& status) {
        constexpr std::chrono::milliseconds kSilence{
            1900};  // ten polls, of which the last is early
        const auto now = std::chrono::steady_clock::now();
        const bool due = !status.Answers() && now - m_lastSign >= kSilence;
        if (due || status.Answers()) {
            m_lastSign = now;
        }
        return due;
    }

private:
    /// The last answer or attempt.
    std::chrono::steady_clock::time_point m_lastSign = std::chrono::steady_clock::now();
};

/// The losses that the library counts, by place; null when it does not report them.
nlohmann::json AskLosses(const ConnectedHead& head, std::optional<CAMERA_TRIGGER_MODE> mode) {
    std::optional<ScanStatistics> statistics = AskStatistics(head.session);
    if (!statistics) {
        return nullptr;
    }
    if (!GivesColor(head.cameras, mode.value_or(TRIGGER_LASER_LINES_COLOR))) {
        statistics->monoWithoutColor = 0;
    }
    return LossesToJson(*statistics);
}

Outcome WatchStatus(const StatusArguments& asked, LeftOn& leftOn, Output& output) {
    output.UseRecords();
    StatusWatch watch;
    // Ctrl-C is the ordinary end of this command.
    const Interrupt interrupt([&watch] {
        watch.Stop();
        return std::string();
    });
    // A board that does not answer now may come back.
    const ConnectedHead head(asked.head, MuteBoard::Taken);
    std::optional<HeadState> shown;
    const auto show = [&](std::chrono::system_clock::time_point time, const BoardStatus& status) {
        HeadState state{status, Figures(AskLosses(head, asked.mode))};
        if (state != shown) {
            output.Line(StatusLine(time, state));
            output.Record(StatusRecord(time, state));
            shown = std::move(state);
        }
    };
    // The library does not report its first polls.
    if (!BoardAnswers(head.session)) {
        show(std::chrono::system_clock::now(), BoardStatus::NoAnswer());
    }
    HeadRecovery recovery(head.session, head.cameras.size(), watch);
    std::optional<Trigger> trigger;
    if (asked.mode) {
        RequireAnswer(head.session);
        trigger.emplace(head.session, *asked.mode, TakeImageSet, &watch, leftOn);
    }
    watch.Watch(head.session);
    std::optional<std::chrono::steady_clock::time_point> end;
    if (asked.seconds) {
        end = std::chrono::steady_clock::now() +
              std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                  std::chrono::duration<double>(*asked.seconds));
    }
    RecoverySchedule schedule;
    while (const auto poll = watch.Next(end)) {
        show(poll->time, poll->status);
        if (schedule.IsDue(poll->status)) {
            recovery.Try();
        }
    }
    trigger.reset();
    Outcome outcome;
    if (shown && !shown->board.Answers()) {
        outcome.code = ExitCode::NotConnected;
        outcome.message = kMuteBoard;
    }
    leftOn.Judge(!leftOn.Any() || BoardAnswers(head.session), outcome);
    return outcome;
}

}  // namespace

RunCommand AddStatus(CLI::App& command) {
    const auto asked = std::make_shared<StatusArguments>();
    AddHeadOptions(command, asked->head, true);
    AddNumberOption(command, "--seconds", asked->seconds, "S", kShortestWatchSeconds,
                    kLongestWatchSeconds, "Stop after this many seconds", " (default: at Ctrl-C)");
    AddModeOption(command, asked->mode,
                  "Switch the trigger on while watching, so that losses can occur: ");
    command.footer(
        "With --json prints one object per line, for each change. A board that does not answer "
        "for\n"
        "two seconds is reconnected, again and again, and gets its settings back.");
    return [asked](Output& output) {
        return TellingLeftOn([&](LeftOn& leftOn) { return WatchStatus(*asked, leftOn, output); });
    };
}

}  // namespace Korvex3Sync::korvexctl
