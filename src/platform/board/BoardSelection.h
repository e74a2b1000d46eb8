#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Korvex3Sync::board {

/// Selects a board.
struct BoardSelection {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string serial;  // empty: any
};

/// Parses the texts of the interface: the identifiers are hexadecimal (upper or lower case, no
/// prefix). Returns nothing for a null text or an identifier that is not a 16-bit number.
std::optional<BoardSelection> ParseSelection(const char* vendor, const char* product,
                                             const char* serial);
/// The synchronization board with this serial (empty: any).
BoardSelection BoardOfSerial(const char* serial);
/// Whether the selection includes a board with these properties.
bool Selects(const BoardSelection& selection, std::uint16_t vendor, std::uint16_t product,
             const std::string& serial);
/// For the journal: "3267, 5752, SERIAL".
std::string SelectionText(const BoardSelection& selection);

}  // namespace Korvex3Sync::board
