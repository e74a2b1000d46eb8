#include "korvexctl/scan/Scan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/cli/ProgressBar.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/Head.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/head/StatusWatch.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/pictures/ScanFiles.h"
#include "korvexctl/scan/Illumination.h"
#include "korvexctl/scan/ScanRecorder.h"
#include "korvexctl/scan/ScanReport.h"
#include "korvexctl/scan/Trigger.h"

namespace Korvex3Sync::korvexctl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kProgressStep{100};

/// How long to wait for a set. A mono set waits in the library for the next trigger, so two trigger
/// periods are always added.
milliseconds Patience(const ScanOptions& options) {
    return milliseconds(std::llround(options.timeoutSeconds * 1000)) +
           milliseconds(2 * options.light.periodMs);
}

/// Waits for the end of the scan. False when no set arrived for too long.
bool WaitForImageSets(ScanRecorder& recorder, const ScanOptions& options, const Output& output) {
    ProgressBar bar(output.ShowsProgress());
    const auto start = ScanRecorder::Clock::now();
    while (true) {
        const ScanRecorder::Counts counts = recorder.Wait(kProgressStep);
        bar.Show(counts.delivered, options.sets);
        if (counts.stopped || counts.delivered == options.sets) {
            return true;
        }
        const auto last = std::max(start, counts.last);
        if (ScanRecorder::Clock::now() - last > Patience(options)) {
            return false;
        }
    }
}

/// Connects, sets the light, scans and disconnects. `outcome` says whether light and trigger are
/// off.
bool Scan(const HeadChoice& choice, ScanReport& report, ScanRecorder& recorder,
          const std::function<void(const KeptImageSet&)>& onKept, LeftOn& leftOn, Outcome& outcome,
          Output& output) {
    const ScanOptions& options = report.options;
    report.cameras = FindCameras(choice.cameraType);
    report.head = AskHead(choice.board);
    StatusWatch boardWatch;
    const Session session(choice.cameraType, choice.board, report.cameras);
    RequireAnswer(session);
    Print(report.cameras, output);
    Print(report.head, output);
    recorder.Prepare(report.cameras.front().width, report.cameras.front().height, onKept);
    boardWatch.Watch(session);
    bool inTime = false;
    {
        const Illumination illumination(session, options.light, leftOn);
        const Trigger trigger(session, options.light.mode, ScanRecorder::OnImageSet,
                              recorder.Context(), leftOn);
        inTime = WaitForImageSets(recorder, options, output);
        report.losses.library = AskStatistics(session);
        report.boardLost = boardWatch.Lost();
    }
    const bool answers = !leftOn.Any() || BoardAnswers(session);
    report.boardLost = report.boardLost || !answers;
    leftOn.Judge(answers, outcome);
    return inTime;
}

/// What an interrupted scan still does when so many sets wait to be written.
std::string StoppingText(std::size_t waiting) {
    return waiting == 0 ? "stopping the scan"
                        : "writing the pictures of " + std::to_string(waiting) +
                              (waiting == 1 ? " set" : " sets");
}

std::string MissingMessage(const ScanReport& report) {
    return "no set arrived within the timeout: " + std::to_string(report.counts.delivered) +
           " of " + std::to_string(report.options.sets) + " sets arrived" +
           (report.boardLost ? "; the board does not answer" : "");
}

Outcome ScanAndWrite(const HeadChoice& choice, const ScanOptions& options, LeftOn& leftOn,
                     Output& output, const StoreFile& store) {
    const bool writes = !options.folder.empty();
    std::optional<EarlierScan> earlier;
    if (writes) {
        PrepareFolder(options.folder);
        earlier.emplace(options.folder);
    }

    ScanRecorder recorder(options.sets,
                          writes ? ChooseImageSets(options.sets, options.keep, kSheetRows)
                                 : std::vector<ChosenImageSet>(),
                          options.buffers);
    const Interrupt interrupt([&recorder] {
        recorder.Stop();
        return StoppingText(recorder.Waiting());
    });
    // The files of an earlier scan give way only to images of this one.
    const StoreFile storeNew = [&](const std::filesystem::path& file,
                                   std::span<const unsigned char> bytes) {
        earlier->Remove();
        store(file, bytes);
    };
    PictureWriter writer(options.folder, storeNew,
                         {[&recorder](const KeptImageSet& set) { recorder.GiveBack(set); },
                          [&recorder] { recorder.Stop(); }});

    ScanReport report;
    report.options = options;
    Outcome outcome;
    bool inTime = false;
    try {
        inTime = Scan(
            choice, report, recorder, [&writer](const KeptImageSet& set) { writer.Add(set); },
            leftOn, outcome, output);
    } catch (const CommandError& error) {
        interrupt.ThrowIfCame(std::string("interrupted: ") + error.what());
        throw;
    }
    writer.Finish();
    report.files = writer.Files();
    report.counts = recorder.Wait(milliseconds(0));
    report.losses.CountColor(GivesColor(report.cameras, options.light.mode)
                                 ? report.counts.delivered - report.counts.withColor
                                 : 0);
    report.losses.notKept = static_cast<std::uint64_t>(report.counts.notKept);
    report.interrupted = interrupt.Came();

    if (report.interrupted) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = "interrupted: " + std::to_string(report.counts.delivered) + " of " +
                          std::to_string(options.sets) + " sets arrived";
    } else if (!inTime) {
        outcome.code = ExitCode::SetsMissing;
        outcome.message = MissingMessage(report);
    }
    outcome.figures->update(ToJson(report));
    try {
        writer.ThrowFailure();
        if (writes && report.counts.delivered > 0) {
            earlier->Remove();  // when no picture of it was kept
            WriteFile(options.folder / kFiguresFile, leftOn.Told(outcome).Document());
        }
    } catch (const CommandError& error) {
        outcome.code = error.Code();
        outcome.message = error.what();
    }
    Print(report, output);
    return outcome;
}

}  // namespace

void StoreWhole(const std::filesystem::path& file, std::span<const unsigned char> bytes) {
    WriteFile(file, bytes);
}

Outcome RunScan(const HeadChoice& choice, const ScanOptions& options, Output& output,
                const StoreFile& store) {
    return TellingLeftOn(
        [&](LeftOn& leftOn) { return ScanAndWrite(choice, options, leftOn, output, store); });
}

}  // namespace Korvex3Sync::korvexctl
