#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "korvexctl/cli/Figures.h"
#include "korvexctl/head/StatusWatch.h"

namespace Korvex3Sync::korvexctl {

/// What `status` shows in one line.
struct HeadState {
    BoardStatus board;
    /// Counts by place; null when the library does not report them.
    Figures losses;

    bool operator==(const HeadState&) const = default;
};

/// For a person: time, status bytes, and losses by place.
std::string StatusLine(std::chrono::system_clock::time_point time, const HeadState& state);

/// "time", "status_a", "status_b", "answers", "losses".
nlohmann::json StatusRecord(std::chrono::system_clock::time_point time, const HeadState& state);

}  // namespace Korvex3Sync::korvexctl
