#pragma once

#include <cstddef>
#include <string>

namespace Korvex3Sync::tests {

/// How often a part occurs in a text.
inline std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto place = text.find(part); place != std::string::npos;
         place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

}  // namespace Korvex3Sync::tests
