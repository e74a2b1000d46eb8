#include "korvexctl/NearNames.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kLongestTyped = 64;
// One letter in so many may be wrong.
constexpr std::size_t kLettersPerSlip = 3;

/// Letters to insert, drop or replace to make one text the other.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// Whether each part of `typed` between hyphens stands in the name.
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

}  // namespace Korvex3Sync::korvexctl
