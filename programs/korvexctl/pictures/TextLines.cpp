#include "korvexctl/pictures/TextLines.h"

#include <utility>

namespace Korvex3Sync::korvexctl {

std::vector<std::string> BreakLines(const std::vector<std::string>& lines, std::size_t width) {
    std::vector<std::string> broken;
    for (std::string rest : lines) {
        while (rest.size() > width) {
            const std::size_t blank = rest.rfind(' ', width);
            const bool cut = blank == std::string::npos || blank == 0;
            broken.push_back(rest.substr(0, cut ? width : blank));
            rest.erase(0, cut ? width : blank + 1);
        }
        broken.push_back(std::move(rest));
    }
    return broken;
}

}  // namespace Korvex3Sync::korvexctl
