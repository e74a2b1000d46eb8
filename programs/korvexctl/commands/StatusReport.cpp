#include "korvexctl/commands/StatusReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/TimeText.h"
#include "korvexctl/scan/LossPlaces.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::string Words(const std::string& key) {
    const auto places = LossPlaces();
    const auto place = std::find_if(places.begin(), places.end(),
                                    [&key](const LossPlace& p) { return p.key == key; });
    return place == places.end() ? key : place->words;
}

/// A head that is away loses what nobody can count.
std::string LossesText(const nlohmann::json& losses, bool answers) {
    if (losses.is_null()) {
        return "losses unknown";
    }
    std::string text;
    for (const auto& [place, count] : losses.items()) {
        if (count != 0) {
            text += (text.empty() ? "lost: " : "; ") + count.dump() + " " + Words(place);
        }
    }
    if (text.empty()) {
        return answers ? "nothing lost" : "losses unknown";
    }
    return text;
}

}  // namespace

std::string StatusLine(std::chrono::system_clock::time_point time, const HeadState& state) {
    const BoardStatus& board = state.board;
    const std::string bytes = std::to_string(board.a) + " " + std::to_string(board.b);
    return TimeText(time) + "  " +
           (board.Answers() ? "status " + bytes : "the board does not answer (" + bytes + ")") +
           "  " + LossesText(*state.losses, board.Answers());
}

nlohmann::json StatusRecord(std::chrono::system_clock::time_point time, const HeadState& state) {
    return {{"time", TimeText(time)},
            {"status_a", state.board.a},
            {"status_b", state.board.b},
            {"answers", state.board.Answers()},
            {"losses", *state.losses}};
}

}  // namespace Korvex3Sync::korvexctl
