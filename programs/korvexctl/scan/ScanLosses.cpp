#include "korvexctl/scan/ScanLosses.h"

#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "korvexctl/files/Output.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/scan/LossPlaces.h"

namespace Korvex3Sync::korvexctl {

namespace {

// A camera that waits for the next trigger fails a snap now and then: no loss by itself.
constexpr const char* kFailedSnapsKey = "failed_snaps";

/// A place that belongs to this program.
struct OwnPlace {
    const char* key;
    const char* words;
    std::uint64_t ScanLosses::*count;
};

constexpr std::array kOwnPlaces{
    OwnPlace{"while_away", "triggers while the head was away, by its period",
             &ScanLosses::whileAway},
    OwnPlace{"not_arrived", "sets that were still expected and did not arrive",
             &ScanLosses::notArrived},
    OwnPlace{"not_kept_disk", "sets not kept because writing was too slow", &ScanLosses::notKept},
    OwnPlace{"not_recorded_disk", "sets not recorded because writing was too slow",
             &ScanLosses::notRecorded},
};

std::string Row(const LossCount& place) {
    constexpr int kCountWidth = 8;
    std::ostringstream row;
    row << std::setw(kCountWidth) << place.count << "  " << place.words;
    return row.str();
}

/// What is said instead of a list of losses.
std::string WithoutLoss(const ScanLosses& losses) {
    if (!losses.library) {
        return "the library does not report losses";
    }
    return losses.library->framesAccepted == 0 ? "no camera delivered a frame" : "nothing lost";
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

void ScanLosses::CountSets(const ScanRecorder::Counts& counts, bool givesColor) {
    if (library) {
        library->monoWithoutColor =
            givesColor ? static_cast<std::uint64_t>(counts.delivered - counts.withColor) : 0;
    }
    notKept = static_cast<std::uint64_t>(counts.notKept);
    notRecorded = static_cast<std::uint64_t>(counts.notRecorded);
}

std::vector<LossCount> ScanLosses::Places() const {
    std::vector<LossCount> places;
    if (library) {
        for (const LossPlace& place : LossPlaces()) {
            places.push_back({place.key, place.words, *library.*place.count});
        }
    }
    for (const OwnPlace& place : kOwnPlaces) {
        places.push_back({place.key, place.words, this->*place.count});
    }
    return places;
}

std::uint64_t ScanLosses::Sum() const {
    std::uint64_t sum = notKept + notRecorded + whileAway + notArrived;
    if (library) {
        sum += library->missingKeys + library->monoWithoutColor + library->setsDropped +
               library->setsWithoutCallback + library->setsNotWritten + library->setsOverwritten +
               library->noticesLost;
    }
    return sum;
}

std::string ScanLosses::Text() const {
    std::string text;
    for (const LossCount& place : Places()) {
        if (place.count > 0) {
            text +=
                (text.empty() ? "lost: " : "; ") + std::to_string(place.count) + " " + place.words;
        }
    }
    return text.empty() ? WithoutLoss(*this) : text;
}

void AddToJson(const ScanLosses& losses, nlohmann::json& figures) {
    nlohmann::json& places = figures["losses"];
    places[kFailedSnapsKey] = nullptr;
    for (const LossPlace& place : LossPlaces()) {
        places[place.key] = nullptr;
    }
    for (const LossCount& place : losses.Places()) {
        places[place.key] = place.count;
    }
    figures["callback_us"] = nullptr;
    figures["service_reconnects"] = nullptr;
    if (losses.library) {
        figures["service_reconnects"] = {{"count", losses.library->serviceReconnects},
                                         {"ms", losses.library->serviceGapMs}};
        places[kFailedSnapsKey] = losses.library->failedSnaps;
        figures["callback_us"] = {{"p50", losses.library->callbackP50Us},
                                  {"p99", losses.library->callbackP99Us},
                                  {"longest", losses.library->callbackLongestUs}};
    }
}

void Print(const ScanLosses& losses, Output& output) {
    if (losses.library && losses.library->serviceReconnects > 0) {
        output.Line("reconnected to the device service " +
                    std::to_string(losses.library->serviceReconnects) + " times, no sets for " +
                    std::to_string(losses.library->serviceGapMs) + " ms");
    }
    std::vector<LossCount> places = losses.Places();
    std::erase_if(places, [](const LossCount& place) { return place.count == 0; });
    output.Line(places.empty() ? WithoutLoss(losses) : "lost:");
    for (const LossCount& place : places) {
        output.Line(Row(place));
    }
    if (losses.library && losses.library->setsDelivered > 0) {
        output.Line("callback " + Duration(losses.library->callbackP50Us) + " (median), " +
                    Duration(losses.library->callbackP99Us) + " (99 %), " +
                    Duration(losses.library->callbackLongestUs) + " (longest)");
    }
}

}  // namespace Korvex3Sync::korvexctl
