#include "platform/os/Print.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string_view>

#include "platform/os/Descriptors.h"

namespace Korvex3Sync::os {

namespace {

using UsualText = std::array<char, 2048>;
constexpr int kErrorDescriptor = 2;

std::atomic<bool> s_flushes{false};

/// The formatted text; nothing if there is not enough room. The C runtime of Windows formats letter
/// by letter into the stream, so that another thread can flush a part of the text.
std::optional<std::string_view> Format(UsualText& room, const char* format, std::va_list values) {
    std::va_list copy;
    va_copy(copy, values);
    const int length = std::vsnprintf(room.data(), room.size(), format, copy);
    va_end(copy);
    if (length < 0 || static_cast<std::size_t>(length) >= room.size()) {
        return std::nullopt;
    }
    return std::string_view(room.data(), static_cast<std::size_t>(length));
}

/// Not through the C runtime: to a console of Windows it writes character by character, and in the
/// code page of its locale.
void WriteError(std::string_view text) {
    while (!text.empty()) {
        const std::ptrdiff_t written = WriteDescriptor(kErrorDescriptor, text.data(), text.size());
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

void Print(const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    UsualText room{};
    if (const auto text = Format(room, format, values)) {
        std::fwrite(text->data(), 1, text->size(), stdout);
    } else {
        std::vprintf(format, values);
    }
    va_end(values);
    if (s_flushes) {
        std::fflush(stdout);
    }
}

void FlushEachPrint() {
    s_flushes = true;
}

void PrintError(const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    UsualText room{};
    if (const auto text = Format(room, format, values)) {
        WriteError(*text);
    } else {
        std::vfprintf(stderr, format, values);
    }
    va_end(values);
    std::fflush(stderr);
}

}  // namespace Korvex3Sync::os
