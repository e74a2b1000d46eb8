#include "platform/text/Wrap.h"

#include <algorithm>

namespace Korvex3Sync::text {

namespace {

/// What separates the columns of a row.
constexpr std::string_view kGap = "  ";
/// A column further to the right than this share of the width leaves too little room for its text.
constexpr std::size_t kWidestShare = 2;

/// Where the text of a line begins: its last column.
std::size_t TextColumn(std::string_view line, std::size_t width) {
    const std::size_t indentation = std::min(line.find_first_not_of(' '), line.size());
    const std::size_t gap = line.rfind(kGap);
    if (gap == std::string_view::npos || gap < indentation || gap > width / kWidestShare) {
        return indentation;
    }
    return gap + kGap.size();
}

void AppendWrapped(std::string_view line, std::size_t width, std::string& wrapped) {
    const std::size_t column = TextColumn(line, width);
    std::string indentation;
    while (indentation.size() + line.size() > width) {
        const std::size_t room = width - std::min(width, indentation.size());
        const std::size_t begin = indentation.empty() ? column : 0;
        std::size_t end = line.rfind(' ', room);
        if (end == std::string_view::npos || end <= begin) {
            // A word that is too long.
            end = line.find(' ', std::max(begin, room));
            if (end == std::string_view::npos) {
                break;
            }
        }
        wrapped.append(indentation).append(line.substr(0, end)).append(1, '\n');
        line.remove_prefix(std::min(line.find_first_not_of(' ', end), line.size()));
        indentation.assign(column, ' ');
    }
    wrapped.append(indentation).append(line).append(1, '\n');
}

}  // namespace

std::string Wrapped(std::string_view text, std::size_t width) {
    std::string wrapped;
    bool emptyBefore = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (!line.empty() || !emptyBefore) {
            AppendWrapped(line, width, wrapped);
        }
        emptyBefore = line.empty();
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return wrapped;
}

}  // namespace Korvex3Sync::text
