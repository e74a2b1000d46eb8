#include "platform/text/Printable.h"

#include <array>
#include <cstddef>

namespace Korvex3Sync::text {

namespace {

using Byte = unsigned char;

constexpr Byte kDelete = 0x7F;
// The two-byte characters below this one are the control characters of 8 bits.
constexpr char32_t kFirstAboveControls = 0xA0;
constexpr Byte kTailMask = 0xC0;
constexpr Byte kTail = 0x80;
constexpr unsigned kTailBits = 6;

struct Lead {
    Byte mask;
    Byte bits;
    std::size_t length;  // of the whole character, in bytes
    char32_t lowest;     // what needs so many bytes
};
constexpr std::array kLeads{Lead{0xE0, 0xC0, 2, 0x80}, Lead{0xF0, 0xE0, 3, 0x800},
                            Lead{0xF8, 0xF0, 4, 0x10000}};
constexpr char32_t kHighest = 0x10FFFF;
constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kLastSurrogate = 0xDFFF;

/// The length of the character of several bytes that the text begins with; 0 when it is none, or a
/// control character.
std::size_t LengthOfShown(std::string_view text) {
    const auto first = static_cast<Byte>(text.front());
    for (const Lead& lead : kLeads) {
        if ((first & lead.mask) != lead.bits || text.size() < lead.length) {
            continue;
        }
        char32_t character = first & static_cast<Byte>(~lead.mask);
        for (const char c : text.substr(1, lead.length - 1)) {
            const auto tail = static_cast<Byte>(c);
            if ((tail & kTailMask) != kTail) {
                return 0;
            }
            character = character << kTailBits | (tail & static_cast<Byte>(~kTailMask));
        }
        const bool valid = character >= lead.lowest && character <= kHighest &&
                           (character < kFirstSurrogate || character > kLastSurrogate);
        return valid && character >= kFirstAboveControls ? lead.length : 0;
    }
    return 0;
}

void AppendEscaped(Byte byte, std::string& shown) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    shown.append("\\x").append(1, kDigits[byte / kDigits.size()]);
    shown += kDigits[byte % kDigits.size()];
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const auto byte = static_cast<Byte>(text.front());
        const std::size_t length = byte >= ' ' && byte < kDelete ? 1 : LengthOfShown(text);
        if (length == 0) {
            AppendEscaped(byte, shown);
            text.remove_prefix(1);
        } else {
            shown += text.substr(0, length);
            text.remove_prefix(length);
        }
    }
    return shown;
}

}  // namespace Korvex3Sync::text
