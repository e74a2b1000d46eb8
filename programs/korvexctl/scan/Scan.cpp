#include "korvexctl/scan/Scan.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/head/Boards.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/scan/Illumination.h"
#include "korvexctl/scan/ScanFolder.h"
#include "korvexctl/scan/ScanRun.h"
#include "korvexctl/scan/Trigger.h"

namespace Korvex3Sync::korvexctl {

namespace {

using std::chrono::milliseconds;

/// The command line's values for every camera order, without those of orders that the head lacks.
ScanSettings SettingsFor(const ScanOptions& options, std::size_t cameras) {
    for (const Assignment& assignment : options.profile) {
        RequireOnHead(*assignment.setting, cameras);
    }
    std::vector<Assignment> given = options.commandLine;
    std::erase_if(given, [cameras](const Assignment& assignment) {
        return assignment.setting->cameraOrder >= static_cast<int>(cameras);
    });
    return CombineSettings(options.profile, given);
}

/// The board that was asked for, or the only one; empty when more than one can be meant.
std::string BoardSerial(const HeadChoice& choice) {
    if (!choice.board.empty()) {
        return choice.board;
    }
    const std::vector<Board> boards = FindBoards();
    return boards.size() == 1 ? boards.front().serial : "";
}

/// Has the library remember all settings: what it never saw it would restore with values of its
/// own.
void MakeRemembered(void* const& handle, const SettingsInUse& settings) {
    std::vector<Assignment> found;
    for (const Reading& reading : settings.readings) {
        const auto& fields = reading.setting->fields;
        bool valid = reading.Known();
        for (std::size_t i = 0; valid && i < fields.size(); ++i) {
            valid = !CheckValue(fields[i], reading.value.at(i));
        }
        if (valid) {
            found.push_back({reading.setting, reading.value});
        }
    }
    Apply(handle, found);
}

/// Connects, sets the light, scans and disconnects. `outcome` says whether light and trigger are
/// off.
void ScanConnected(const HeadChoice& choice, ScanReport& report, ScanRecorder& recorder,
                   const std::function<void(const KeptImageSet&)>& onKept, ScanNotes& notes,
                   LeftOn& leftOn, Outcome& outcome, Output& output) {
    report.cameras = FindCameras(choice.cameraType);
    report.boardSerial = BoardSerial(choice);
    report.head = AskHead(choice.board);
    StatusWatch boardWatch;
    const ConnectedHead head(choice, report.cameras);
    Print(report.cameras, output);
    Print(report.head, output);
    report.settings = ApplyAndRead(head.Handle(), head.cameras.size(),
                                   SettingsFor(report.options, head.cameras.size()));
    Print(report.settings, output);
    if (report.options.reconnect) {
        MakeRemembered(head.Handle(), report.settings);
    }
    recorder.Prepare(report.cameras.front().width, report.cameras.front().height, onKept);
    boardWatch.Watch(head.session);
    const ScanLight& light = report.settings.asked.light;
    {
        ScanRun run(head, boardWatch, recorder, report, notes, output.ShowsProgress());
        const Illumination illumination(head.session, light, leftOn);
        const Trigger trigger(head.session, light.mode, ScanRecorder::OnImageSet,
                              recorder.Context(), leftOn);
        run.Wait();
    }
    const bool answers = !leftOn.Any() || BoardAnswers(head.session);
    report.boardLost = report.boardLost || !answers;
    leftOn.Judge(answers, outcome);
}

/// What an interrupted scan still does when so many sets wait to be written.
std::string StoppingText(std::size_t waiting) {
    return waiting == 0 ? "stopping the scan"
                        : "writing the pictures of " + std::to_string(waiting) +
                              (waiting == 1 ? " set" : " sets");
}

/// "20 of 30 sets arrived"
std::string ArrivedText(const ScanReport& report) {
    const auto& asked = report.options.end.sets;
    return std::to_string(report.counts.delivered) +
           (asked ? " of " + std::to_string(*asked) : "") + " sets arrived";
}

/// How the scan ended, where light and trigger are no reason for another code.
void Judge(const ScanReport& report, Outcome& outcome) {
    const ScanEnd& end = report.options.end;
    const bool endless = !end.sets && !end.seconds;
    const int delivered = report.counts.delivered;
    if (report.interrupted && !(endless && delivered > 0)) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = "interrupted: " + ArrivedText(report);
    } else if (report.endedBy == EndedBy::Timeout || delivered == 0) {
        outcome.code = ExitCode::SetsMissing;
        outcome.message = "no set arrived within the timeout: " + ArrivedText(report) +
                          (report.boardLost ? "; the board does not answer" : "");
    } else if (outcome.code == ExitCode::Done && report.losses.notKept > 0) {
        outcome.code = ExitCode::NotWritable;
        outcome.message = std::to_string(report.losses.notKept) + " of " +
                          std::to_string(report.options.keep) +
                          " sets could not be kept because writing was too slow; use a smaller "
                          "--keep, a longer --period or more --buffers";
    }
}

Outcome ScanAndWrite(const HeadChoice& choice, const ScanOptions& options, LeftOn& leftOn,
                     Output& output, const StoreFile& store) {
    const bool writes = !options.folder.empty();
    std::optional<ScanFolder> folder;
    if (writes) {
        folder.emplace(options.folder, store);
    }
    ScanPlan plan;
    plan.sets = options.end.sets.value_or(plan.sets);
    plan.choice = ImageSetChoice(writes ? options.keep : 0, options.end);
    plan.recording = options.recording;
    plan.buffers = options.Buffers();
    ScanRecorder recorder(plan);
    const Interrupt interrupt([&recorder] {
        recorder.Stop();
        return StoppingText(recorder.Waiting());
    });
    PictureWriter writer(
        options.folder,
        [&folder](const std::filesystem::path& file, std::span<const unsigned char> bytes) {
            folder->Store(file, bytes);
        },
        {[&recorder](const KeptImageSet& set) { recorder.GiveBack(set); },
         [&recorder] { recorder.Stop(); }});

    ScanReport report;
    report.options = options;
    report.start = std::chrono::system_clock::now();
    Outcome outcome;
    ScanNotes notes;
    notes.table = folder ? &folder->Table() : nullptr;
    try {
        ScanConnected(
            choice, report, recorder, [&writer](const KeptImageSet& set) { writer.Add(set); },
            notes, leftOn, outcome, output);
    } catch (const CommandError& error) {
        interrupt.ThrowIfCame(std::string("interrupted: ") + error.what());
        throw;
    }
    report.counts = recorder.Wait(milliseconds(0));
    report.losses.CountSets(report.counts,
                            GivesColor(report.cameras, report.settings.asked.light.mode));
    report.interrupted = interrupt.Came();
    writer.Finish(Headline(report));
    report.pictures = writer.Pictures();
    report.recorded = writer.Recorded();
    Judge(report, outcome);
    try {
        if (folder) {
            folder->Finish(report, writer, notes, outcome, leftOn);
        }
    } catch (const CommandError& error) {
        outcome.code = error.Code();
        outcome.message = error.what();
    }
    outcome.figures->update(ToJson(report));
    Print(report, output);
    return outcome;
}

}  // namespace

Outcome RunScan(const HeadChoice& choice, const ScanOptions& options, Output& output,
                const StoreFile& store) {
    return TellingLeftOn(
        [&](LeftOn& leftOn) { return ScanAndWrite(choice, options, leftOn, output, store); });
}

}  // namespace Korvex3Sync::korvexctl
