#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Korvex3Sync::board {

/// Which board is meant.
struct BoardSelection {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string serial;  // empty: any
};

/// From the texts of the interface: the identifiers in hexadecimal (upper or lower case, no
/// prefix). Nothing for a null text or one that is not such a number of 16 bits.
std::optional<BoardSelection> ParseSelection(const char* vendor, const char* product,
                                             const char* serial);
/// The synchronization board with this serial (empty: any).
BoardSelection BoardOfSerial(const char* serial);
/// Whether a board with these properties is meant.
bool Selects(const BoardSelection& selection, std::uint16_t vendor, std::uint16_t product,
             const std::string& serial);
/// For the journal: "3267, 5752, SERIAL".
std::string SelectionText(const BoardSelection& selection);

}  // namespace Korvex3Sync::board
