#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// Bytes of one page of the board's user memory.
inline constexpr std::size_t kUserInfoBytes = 256;

/// Bytes as pairs of hexadecimal digits without anything between.
std::string ToHex(std::string_view bytes);

/// The other way; empty for an odd number of digits or anything that is no digit.
std::optional<std::string> FromHex(std::string_view digits);

/// The page without the zeros at its end.
std::string_view WithoutPadding(std::string_view page);

/// The page's text: what stands before the zeros at its end, if that is printable ASCII.
std::optional<std::string> PageText(std::string_view page);

}  // namespace Korvex3Sync::korvexctl
