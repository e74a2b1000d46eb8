#include "korvexctl/scan/ScanReport.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "korvexctl/Version.h"
#include "korvexctl/cli/TimeText.h"
#include "korvexctl/files/Output.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

const char* WordOf(EndedBy end) {
    switch (end) {
        case EndedBy::Sets:
            return "sets";
        case EndedBy::Seconds:
            return "seconds";
        case EndedBy::Timeout:
            return "timeout";
        case EndedBy::Stop:
            break;
    }
    return "stop";
}

template <typename Number>
nlohmann::json OrNull(const std::optional<Number>& number) {
    return number ? nlohmann::json(*number) : nlohmann::json();
}

std::string Fixed(double number, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << number;
    return text.str();
}

/// "20 of 20"; "20" for a scan without a number of sets.
std::string SetsText(const ScanReport& report) {
    const std::string delivered = std::to_string(report.counts.delivered);
    const auto& asked = report.options.end.sets;
    return asked ? delivered + " of " + std::to_string(*asked) : delivered;
}

std::string RateText(const ScanReport& report) {
    const auto rate = report.counts.Rate();
    return rate ? Fixed(*rate, 1) + " sets/s over " + Fixed(report.counts.Time().count(), 2) + " s"
                : "";
}

nlohmann::json OutagesToJson(const std::vector<Outage>& outages) {
    nlohmann::json list = nlohmann::json::array();
    for (const Outage& outage : outages) {
        list.push_back({{"at_seconds", outage.atSeconds},
                        {"seconds", outage.seconds},
                        {"triggers", outage.triggers},
                        {"not_restored", outage.notRestored}});
    }
    return list;
}

nlohmann::json PicturesToJson(const std::vector<WrittenSet>& pictures) {
    nlohmann::json list = nlohmann::json::array();
    for (const WrittenSet& set : pictures) {
        list.push_back({{"number", set.number},
                        {"key", set.key},
                        {"seconds", set.seconds},
                        {"files", set.files}});
    }
    return list;
}

void PrintOutages(const std::vector<Outage>& outages, Output& output) {
    for (const Outage& outage : outages) {
        output.Line("reconnected: no sets for " + Fixed(outage.seconds, 1) + " s from second " +
                    Fixed(outage.atSeconds, 1) + " on");
        for (const std::string& setting : outage.notRestored) {
            output.Line("  " + setting + " could not be restored");
        }
    }
}

}  // namespace

std::vector<std::string> Headline(const ScanReport& report) {
    std::string settings;
    for (const std::string& text : report.settings.Texts()) {
        settings += (settings.empty() ? "" : ", ") + text;
    }
    const std::string rate = RateText(report);
    return {TimeText(report.start) + ", mode " + ModeName(report.settings.asked.light.mode),
            settings, "sets " + SetsText(report) + (rate.empty() ? "" : ", " + rate),
            report.losses.Text()};
}

nlohmann::json ToJson(const ScanReport& report) {
    const ScanRecorder::Counts& counts = report.counts;
    nlohmann::json figures;
    figures["date"] = TimeText(report.start);
    figures["version"] = kVersion;
    figures["cameras"] = ToJson(report.cameras);
    AddToJson(report.head, figures);
    figures["board_serial"] = nullptr;
    if (!report.boardSerial.empty()) {
        figures["board_serial"] = report.boardSerial;
    }
    figures["settings"] = ToJson(report.settings);
    figures["sets"] = {{"asked", OrNull(report.options.end.sets)},
                       {"delivered", counts.delivered},
                       {"with_color", counts.withColor},
                       {"without_color", counts.delivered - counts.withColor},
                       {"odd", counts.odd}};
    figures["seconds_asked"] = OrNull(report.options.end.seconds);
    figures["seconds"] = counts.Time().count();
    figures["sets_per_second"] = OrNull(counts.Rate());
    AddToJson(report.losses, figures);
    figures["outages"] = OutagesToJson(report.outages);
    figures["ended_by"] = WordOf(report.endedBy);
    figures["interrupted"] = report.interrupted;
    figures["board_lost"] = report.boardLost;
    figures["pictures"] = PicturesToJson(report.pictures);
    figures["recorded"] = report.recorded;
    figures["files"] = report.files;
    return figures;
}

void Print(const ScanReport& report, Output& output) {
    const ScanRecorder::Counts& counts = report.counts;
    std::ostringstream sets;
    sets << "sets " << SetsText(report) << ": " << counts.withColor << " with colour, "
         << counts.delivered - counts.withColor << " without";
    if (counts.odd > 0) {
        sets << ", " << counts.odd << " malformed ones left out";
    }
    output.Line(sets.str());
    if (const std::string rate = RateText(report); !rate.empty()) {
        output.Line("rate " + rate);
    }
    PrintOutages(report.outages, output);
    Print(report.losses, output);
    if (!report.options.folder.empty()) {
        const std::size_t files = report.files.size();
        output.Line("wrote " + std::to_string(files) + (files == 1 ? " file to " : " files to ") +
                    os::TextOf(report.options.folder));
        if (report.options.recording) {
            output.Line("recorded " + std::to_string(report.recorded) + " sets");
        }
    }
}

}  // namespace Korvex3Sync::korvexctl
