#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/scan/ScanRecorder.h"

namespace Korvex3Sync::korvexctl {

class Output;
class Session;

/// What the library has counted since the head was connected; empty when it fails. To be read while
/// the trigger runs, so that nothing after it counts.
std::optional<ScanStatistics> AskStatistics(const Session& session);

/// {"missing_keys": 0, ...}: one count for each of LossPlaces.
nlohmann::json LossesToJson(const ScanStatistics& statistics);

/// What was lost at one place.
struct LossCount {
    const char* key;
    const char* words;
    std::uint64_t count;
};

/// What was lost between the cameras and the files, by place, and how long the scan callback took.
struct ScanLosses {
    /// Since the head was connected; empty when the library does not report it.
    std::optional<ScanStatistics> library;
    /// Pictures that were asked for and not kept because writing was too slow.
    std::uint64_t notKept = 0;
    /// Sets that were not recorded because writing was too slow.
    std::uint64_t notRecorded = 0;
    /// Triggers that the head did not give while it was away, by its period.
    std::uint64_t whileAway = 0;
    /// Sets that were expected when the scan ended, and did not come.
    std::uint64_t notArrived = 0;

    /// Takes over what the recorder counted. Its count of sets without colour replaces that of the
    /// library, which may be off by one set at that moment and counts every set of a head without
    /// colour.
    void CountSets(const ScanRecorder::Counts& counts, bool givesColor);
    /// Every place, in the order of a frame's path, also without a loss. Without those of the
    /// library when that does not report them.
    std::vector<LossCount> Places() const;
    /// Triggers without a whole set, each once, and pictures and sets that were not written.
    std::uint64_t Sum() const;
    /// "nothing lost", "lost: 12 triggers without a set; ...", or why that is not known.
    std::string Text() const;
};

/// Adds "losses" with one key for each place, and "callback_us" with "p50", "p99" and "longest".
/// Unknown counts are null.
void AddToJson(const ScanLosses& losses, nlohmann::json& figures);
/// "nothing lost", or one line for each place where something was; then the callback times.
void Print(const ScanLosses& losses, Output& output);

}  // namespace Korvex3Sync::korvexctl
