#include "korvexctl/head/UserMemory.h"

#include <Korvex3Sync/Connection.h>

#include <algorithm>
#include <charconv>
#include <memory>

#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kHexBase = 16;
constexpr unsigned kNibbleBits = 4;
constexpr unsigned kNibble = 15;

bool IsPrintable(char c) {
    return c >= ' ' && c <= '~';
}

std::string PageName(int page) {
    return "page " + std::to_string(page) + " of the user memory";
}

}  // namespace

std::string ReadUserMemory(void* const& handle, int page) {
    std::string bytes(kUserMemoryPageBytes, '\0');
    char* data = bytes.data();
    const RETSTATUS status = ReadUserInfomation(handle, page, data);
    if (data != bytes.data()) {
        // Service mode has made a text of its own.
        const std::unique_ptr<char[]> text(data);
        bytes = text.get();
        bytes.resize(kUserMemoryPageBytes, '\0');
    }
    Require(status, "read " + PageName(page));
    return bytes;
}

void WriteUserMemory(void* const& handle, int page, const std::string& bytes) {
    if (WithoutPadding(bytes).find('\0') != std::string_view::npos) {
        RefuseInServiceMode(PageName(page), kUserMemoryIsText);
    }
    Require(WriteUserInfomation(handle, page, bytes.data(), static_cast<int>(bytes.size())),
            "write " + PageName(page));
}

std::string ToHex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kDigits[byte >> kNibbleBits];
        hex += kDigits[byte & kNibble];
    }
    return hex;
}

std::optional<std::string> FromHex(std::string_view digits) {
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    for (; !digits.empty(); digits.remove_prefix(2)) {
        unsigned char byte = 0;
        const char* const end = digits.data() + 2;
        const auto [rest, error] = std::from_chars(digits.data(), end, byte, kHexBase);
        if (error != std::errc() || rest != end) {
            return std::nullopt;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string_view WithoutPadding(std::string_view page) {
    const std::size_t last = page.find_last_not_of('\0');
    return page.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::optional<std::string> PageText(std::string_view page) {
    const std::string_view text = WithoutPadding(page);
    if (!std::all_of(text.begin(), text.end(), IsPrintable)) {
        return std::nullopt;
    }
    return std::string(text);
}

}  // namespace Korvex3Sync::korvexctl
