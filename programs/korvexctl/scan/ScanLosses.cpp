#include "korvexctl/scan/ScanLosses.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "korvexctl/files/Output.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/scan/LossPlaces.h"

namespace Korvex3Sync::korvexctl {

namespace {

// A camera that waits for the next trigger fails a snap now and then: no loss by itself.
constexpr const char* kFailedSnapsKey = "failed_snaps";
constexpr const char* kNotKeptKey = "not_kept_disk";
constexpr const char* kNotKeptWords = "sets not kept because writing was too slow";

std::string Row(std::uint64_t count, const char* words) {
    constexpr int kCountWidth = 8;
    std::ostringstream row;
    row << std::setw(kCountWidth) << count << "  " << words;
    return row.str();
}

std::vector<std::string> Rows(const ScanLosses& losses) {
    std::vector<std::string> rows;
    if (losses.library) {
        for (const LossPlace& place : LossPlaces()) {
            const std::uint64_t count = *losses.library.*place.count;
            if (count > 0) {
                rows.push_back(Row(count, place.words));
            }
        }
    }
    if (losses.notKept > 0) {
        rows.push_back(Row(losses.notKept, kNotKeptWords));
    }
    return rows;
}

std::string Duration(std::uint64_t microseconds) {
    constexpr std::uint64_t kMicrosecondsPerMillisecond = 1000;
    if (microseconds < kMicrosecondsPerMillisecond) {
        return std::to_string(microseconds) + " us";
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(2)
         << static_cast<double>(microseconds) / double{kMicrosecondsPerMillisecond} << " ms";
    return text.str();
}

void PrintPlaces(const ScanLosses& losses, Output& output) {
    const std::vector<std::string> rows = Rows(losses);
    if (!rows.empty()) {
        output.Line("lost:");
        for (const std::string& row : rows) {
            output.Line(row);
        }
    } else if (!losses.library) {
        output.Line("the library does not report losses");
    } else if (losses.library->framesAccepted == 0) {
        output.Line("no camera delivered a frame");
    } else {
        output.Line("nothing lost");
    }
}

}  // namespace

std::optional<ScanStatistics> AskStatistics(const Session& session) {
    ScanStatistics statistics;
    return GetScanStatistics(session.Handle(), statistics) == STATUS_SUCCESS
               ? std::optional(statistics)
               : std::nullopt;
}

nlohmann::json LossesToJson(const ScanStatistics& statistics) {
    nlohmann::json losses;
    for (const LossPlace& place : LossPlaces()) {
        losses[place.key] = statistics.*place.count;
    }
    return losses;
}

void ScanLosses::CountColor(int missing) {
    if (library) {
        library->monoWithoutColor = static_cast<std::uint64_t>(missing);
    }
}

void AddToJson(const ScanLosses& losses, nlohmann::json& figures) {
    nlohmann::json& places = figures["losses"];
    if (losses.library) {
        places = LossesToJson(*losses.library);
        places[kFailedSnapsKey] = losses.library->failedSnaps;
    } else {
        places[kFailedSnapsKey] = nullptr;
        for (const LossPlace& place : LossPlaces()) {
            places[place.key] = nullptr;
        }
    }
    places[kNotKeptKey] = losses.notKept;
    figures["callback_us"] = nullptr;
    if (losses.library) {
        figures["callback_us"] = {{"p50", losses.library->callbackP50Us},
                                  {"p99", losses.library->callbackP99Us},
                                  {"longest", losses.library->callbackLongestUs}};
    }
}

void Print(const ScanLosses& losses, Output& output) {
    PrintPlaces(losses, output);
    if (losses.library && losses.library->setsDelivered > 0) {
        output.Line("callback " + Duration(losses.library->callbackP50Us) + " (median), " +
                    Duration(losses.library->callbackP99Us) + " (99 %), " +
                    Duration(losses.library->callbackLongestUs) + " (longest)");
    }
}

}  // namespace Korvex3Sync::korvexctl
