#include "platform/board/BoardSelection.h"

#include <array>
#include <charconv>
#include <cstring>
#include <system_error>

#include "platform/include/BoardFacts.h"

namespace Korvex3Sync::board {
namespace {

constexpr int kHexadecimal = 16;

std::optional<std::uint16_t> ParseIdentifier(const char* text) {
    if (!text) {
        return std::nullopt;
    }
    std::uint16_t value = 0;
    const char* const end = text + std::strlen(text);
    const auto result = std::from_chars(text, end, value, kHexadecimal);
    return result.ec == std::errc{} && result.ptr == end ? std::optional(value) : std::nullopt;
}

std::string IdentifierText(std::uint16_t value) {
    std::array<char, 4> digits{};
    const auto result =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, kHexadecimal);
    const std::string text(digits.data(), result.ptr);
    return std::string(digits.size() - text.size(), '0') + text;
}

}  // namespace

std::optional<BoardSelection> ParseSelection(const char* vendor, const char* product,
                                             const char* serial) {
    const auto vendorId = ParseIdentifier(vendor);
    const auto productId = ParseIdentifier(product);
    if (!vendorId || !productId || !serial) {
        return std::nullopt;
    }
    return BoardSelection{*vendorId, *productId, serial};
}

BoardSelection BoardOfSerial(const char* serial) {
    return {hardware::kBoardVendor, hardware::kBoardProduct, serial};
}

bool Selects(const BoardSelection& selection, std::uint16_t vendor, std::uint16_t product,
             const std::string& serial) {
    return selection.vendor == vendor && selection.product == product &&
           (selection.serial.empty() || selection.serial == serial);
}

std::string SelectionText(const BoardSelection& selection) {
    return IdentifierText(selection.vendor) + ", " + IdentifierText(selection.product) + ", " +
           selection.serial;
}

}  // namespace Korvex3Sync::board
