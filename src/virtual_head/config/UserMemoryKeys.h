#pragma once

#include <toml++/toml.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace Korvex3Sync::virtual_head {

/// An error in the pages of a head file, with its line.
struct WrongPage {
    int line;
    std::string what;
};

/// Reads the array [[board.user_memory]] into the user memory. Each entry has `page` (0 to 15) and
/// the content from the start of the page, either `text` or `bytes` (numbers 0 to 255), at most 256
/// bytes.
std::optional<WrongPage> ReadUserMemory(const toml::node& pages,
                                        std::array<std::uint8_t, 4096>& memory);

}  // namespace Korvex3Sync::virtual_head
