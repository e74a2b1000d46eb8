#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// The board's user memory: pages 0 to 15, of 256 bytes each.
inline constexpr int kUserMemoryPages = 16;
inline constexpr std::size_t kUserMemoryPageBytes = 256;

inline constexpr const char* kUserMemoryIsText =
    "service mode transfers a page up to its first zero byte";

/// Reads a whole page of a connected head; in service mode up to its first zero byte, and zeros
/// after it. Throws CommandError(DeviceRefused).
std::string ReadUserMemory(void* const& handle, int page);

/// Writes a page, with zeros after the bytes; 256 bytes at most. Throws as ReadUserMemory does, and
/// CommandError(NotInServiceMode) if service mode would cut the bytes short.
void WriteUserMemory(void* const& handle, int page, const std::string& bytes);

/// Bytes as pairs of hexadecimal digits without anything between.
std::string ToHex(std::string_view bytes);

/// The reverse; empty for an odd number of digits or anything that is not a digit.
std::optional<std::string> FromHex(std::string_view digits);

/// The page without the zeros at its end.
std::string_view WithoutPadding(std::string_view page);

/// The page's text: what precedes the zeros at its end, if that is printable ASCII.
std::optional<std::string> PageText(std::string_view page);

}  // namespace Korvex3Sync::korvexctl
