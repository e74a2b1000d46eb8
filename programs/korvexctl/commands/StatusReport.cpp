#include "korvexctl/commands/StatusReport.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "korvexctl/scan/LossPlaces.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::string Words(const std::string& key) {
    const auto places = LossPlaces();
    const auto place = std::find_if(places.begin(), places.end(),
                                    [&key](const LossPlace& p) { return p.key == key; });
    return place == places.end() ? key : place->words;
}

std::string LossesText(const nlohmann::json& losses) {
    if (losses.is_null()) {
        return "losses unknown";
    }
    std::string text;
    for (const auto& [place, count] : losses.items()) {
        if (count != 0) {
            text += (text.empty() ? "lost: " : "; ") + count.dump() + " " + Words(place);
        }
    }
    return text.empty() ? "nothing lost" : text;
}

}  // namespace

std::string TimeText(std::chrono::system_clock::time_point time) {
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(days);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(time - days));
    std::ostringstream text;
    text << std::setfill('0') << std::setw(4) << static_cast<int>(date.year()) << '-'
         << std::setw(2) << static_cast<unsigned>(date.month()) << '-' << std::setw(2)
         << static_cast<unsigned>(date.day()) << 'T' << std::setw(2) << clock.hours().count() << ':'
         << std::setw(2) << clock.minutes().count() << ':' << std::setw(2)
         << clock.seconds().count() << '.' << std::setw(3) << clock.subseconds().count() << 'Z';
    return text.str();
}

std::string StatusLine(std::chrono::system_clock::time_point time, const HeadState& state) {
    const BoardStatus& board = state.board;
    const std::string bytes = std::to_string(board.a) + " " + std::to_string(board.b);
    return TimeText(time) + "  " +
           (board.Answers() ? "status " + bytes : "the board does not answer (" + bytes + ")") +
           "  " + LossesText(*state.losses);
}

nlohmann::json StatusRecord(std::chrono::system_clock::time_point time, const HeadState& state) {
    return {{"time", TimeText(time)},
            {"status_a", state.board.a},
            {"status_b", state.board.b},
            {"answers", state.board.Answers()},
            {"losses", *state.losses}};
}

}  // namespace Korvex3Sync::korvexctl
