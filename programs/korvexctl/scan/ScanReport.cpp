#include "korvexctl/scan/ScanReport.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "korvexctl/files/Output.h"

namespace Korvex3Sync::korvexctl {

nlohmann::json ToJson(const ScanReport& report) {
    const ScanRecorder::Counts& counts = report.counts;
    nlohmann::json figures;
    figures["cameras"] = ToJson(report.cameras);
    AddToJson(report.head, figures);
    figures["settings"] = ToJson(report.options.light);
    figures["sets"] = {{"asked", report.options.sets},
                       {"delivered", counts.delivered},
                       {"with_color", counts.withColor},
                       {"without_color", counts.delivered - counts.withColor},
                       {"odd", counts.odd}};
    figures["seconds"] = counts.Time().count();
    figures["sets_per_second"] = nullptr;
    if (const auto rate = counts.Rate()) {
        figures["sets_per_second"] = *rate;
    }
    AddToJson(report.losses, figures);
    figures["interrupted"] = report.interrupted;
    figures["board_lost"] = report.boardLost;
    figures["files"] = report.files;
    return figures;
}

void Print(const ScanReport& report, Output& output) {
    const ScanRecorder::Counts& counts = report.counts;
    std::ostringstream sets;
    sets << "sets " << counts.delivered << " of " << report.options.sets << ": " << counts.withColor
         << " with colour, " << counts.delivered - counts.withColor << " without";
    if (counts.odd > 0) {
        sets << ", " << counts.odd << " malformed ones left out";
    }
    output.Line(sets.str());
    if (const auto rate = counts.Rate()) {
        std::ostringstream text;
        text << std::fixed << std::setprecision(1) << "rate " << *rate << " sets/s over "
             << std::setprecision(2) << counts.Time().count() << " s";
        output.Line(text.str());
    }
    Print(report.losses, output);
    if (!report.options.folder.empty()) {
        const std::size_t files = report.files.size();
        output.Line("wrote " + std::to_string(files) +
                    (files == 1 ? " picture to " : " pictures to ") +
                    report.options.folder.string());
    }
}

}  // namespace Korvex3Sync::korvexctl
