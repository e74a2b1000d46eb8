#include "platform/text/NearNames.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace Korvex3Sync::text {

namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kLongestTyped = 64;
// One letter in this many may be wrong.
constexpr std::size_t kLettersPerSlip = 3;

/// How many letters to insert, drop or replace, or neighbours to swap, to turn one text into the
/// other.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> above(b.size() + 1);
    std::iota(above.begin(), above.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::vector<std::size_t> row(b.size() + 1, i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = above[j] + (a[i] == b[j] ? 0 : 1);
            row[j + 1] = std::min({replaced, row[j] + 1, above[j + 1] + 1});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j]) {
                row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
            }
        }
        before = std::exchange(above, std::move(row));
    }
    return above.back();
}

/// Whether each part of `typed` between hyphens occurs in the name.
bool HasAllParts(std::string_view typed, std::string_view name) {
    while (!typed.empty()) {
        const std::size_t end = std::min(typed.find_first_of("-_ "), typed.size());
        if (name.find(typed.substr(0, end)) == std::string_view::npos) {
            return false;
        }
        typed.remove_prefix(std::min(end + 1, typed.size()));
    }
    return true;
}

}  // namespace

std::vector<std::string> NearNames(std::string_view typed, const std::vector<std::string>& names) {
    const bool hasLetter = std::any_of(typed.begin(), typed.end(), [](char c) {
        return std::isalpha(static_cast<unsigned char>(c)) != 0;
    });
    if (!hasLetter || typed.size() > kLongestTyped) {
        return {};
    }
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& name : names) {
        const std::size_t distance = Distance(typed, name);
        if (distance <= typed.size() / kLettersPerSlip || HasAllParts(typed, name)) {
            near.emplace_back(distance, name);
        }
    }
    std::stable_sort(near.begin(), near.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> nearest;
    for (std::size_t i = 0; i < near.size() && i < kMostNames; ++i) {
        nearest.push_back(near[i].second);
    }
    return nearest;
}

std::string DidYouMean(std::string_view typed, const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& near : NearNames(typed, names)) {
        text += (text.empty() ? "; did you mean " : " or ") + near;
    }
    return text;
}

}  // namespace Korvex3Sync::text
