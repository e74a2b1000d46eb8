#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace Korvex3Sync::korvexctl {

class Output;
class Session;

/// What was lost between the cameras and the files, by the place where it went, and how long the
/// scan callback took.
struct ScanLosses {
    /// Since the head was connected; nothing when the library does not tell.
    std::optional<ScanStatistics> library;
    /// Chosen sets that were not kept because writing was too slow.
    std::uint64_t notKept = 0;

    /// Asks the library; to be called while the trigger runs, so that what comes after it is not
    /// counted.
    void Ask(const Session& session);
    /// Counts missing colour by the sets that came, with what a scan has seen of them: the library
    /// may count one set less or more at the moment when it is asked, and counts each set of a head
    /// without colour.
    void CountColor(int missing);
};

/// Adds "losses" with one key for each place, and "callback_us" with "p50", "p99" and "longest".
/// What the library does not tell is null.
void AddToJson(const ScanLosses& losses, nlohmann::json& figures);
/// "nothing lost", or one line for each place where something was; then the callback times.
void Print(const ScanLosses& losses, Output& output);

}  // namespace Korvex3Sync::korvexctl
