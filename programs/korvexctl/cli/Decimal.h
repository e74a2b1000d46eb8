#pragma once

#include <charconv>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

namespace Korvex3Sync::korvexctl {

/// A typed decimal number, so "010" is ten. Empty for anything else: signs except "-", blanks,
/// exponents, hexadecimal digits, more than a `Number` holds. "nan" and "inf" are read, and are in
/// no range.
template <typename Number>
std::optional<Number> ReadDecimal(std::string_view text) {
    Number value{};
    const char* const end = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::is_floating_point_v<Number>) {
        result = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    } else {
        result = std::from_chars(text.data(), end, value);
    }
    return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

/// A number as ReadDecimal reads it, for every number of our ranges.
template <typename Number>
std::string DecimalText(Number value) {
    constexpr int kDigits = 10;
    std::ostringstream text;
    text << std::setprecision(kDigits) << value;
    return text.str();
}

/// "0 to 15".
template <typename Number>
std::string RangeText(Number low, Number high) {
    return DecimalText(low) + " to " + DecimalText(high);
}

}  // namespace Korvex3Sync::korvexctl
