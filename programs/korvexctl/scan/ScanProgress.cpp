#include "korvexctl/scan/ScanProgress.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;

/// "12 s", "3:05 min", "2:00 h"
std::string TimeText(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(std::max(seconds, 0.0)));
    std::ostringstream text;
    text << std::setfill('0');
    if (whole < kSecondsPerMinute) {
        text << whole << " s";
    } else if (whole < kSecondsPerHour) {
        text << whole / kSecondsPerMinute << ':' << std::setw(2) << whole % kSecondsPerMinute
             << " min";
    } else {
        text << whole / kSecondsPerHour << ':' << std::setw(2)
             << whole % kSecondsPerHour / kSecondsPerMinute << " h";
    }
    return text.str();
}

}  // namespace

std::optional<double> ScanProgress::Done() const {
    std::optional<double> done;
    if (end.sets) {
        done = static_cast<double>(counts.delivered) / *end.sets;
    }
    if (end.seconds) {
        done = std::max(done.value_or(0), seconds / *end.seconds);
    }
    return done;
}

std::string ScanProgress::Text() const {
    std::ostringstream text;
    text << counts.delivered;
    if (end.sets) {
        text << '/' << *end.sets;
    }
    text << " sets";
    const std::optional<double> rate = counts.Rate();
    if (rate) {
        text << std::fixed << std::setprecision(1) << "  " << *rate << "/s";
    }
    text << "  " << lost << " lost  ";
    std::optional<double> left;
    if (end.sets && rate) {
        left = (*end.sets - counts.delivered) / *rate;
    }
    if (end.seconds) {
        left = std::min(left.value_or(*end.seconds), *end.seconds - seconds);
    }
    if (away) {
        text << "reconnecting";
    } else if (left) {
        text << TimeText(*left) << " left";
    } else {
        text << TimeText(seconds);
    }
    return text.str();
}

}  // namespace Korvex3Sync::korvexctl
