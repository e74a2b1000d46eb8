#include "platform/os/Print.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "platform/os/Descriptors.h"

namespace Korvex3Sync::os {

namespace {

constexpr std::size_t kUsualText = 2048;
constexpr int kErrorDescriptor = 2;

std::atomic<bool> s_flushes{false};

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
    std::vprintf(format, values);
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
    std::array<char, kUsualText> text{};
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(text.data(), text.size(), format, values);
    if (length >= 0 && static_cast<std::size_t>(length) < text.size()) {
        WriteError({text.data(), static_cast<std::size_t>(length)});
    } else {
        std::vfprintf(stderr, format, again);
    }
    va_end(again);
    va_end(values);
    std::fflush(stderr);
}

}  // namespace Korvex3Sync::os
