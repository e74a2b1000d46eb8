#include "korvexctl/cli/TimeText.h"

#include <iomanip>
#include <sstream>

namespace Korvex3Sync::korvexctl {

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

}  // namespace Korvex3Sync::korvexctl
