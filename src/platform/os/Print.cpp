#include "platform/os/Print.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace Korvex3Sync::os {

namespace {

constexpr std::size_t kUsualText = 2048;

std::atomic<bool> s_flushes{false};

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
    // Not every C runtime keeps what goes to standard error together: there, each character would
    // be written by itself.
    std::array<char, kUsualText> text{};
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(text.data(), text.size(), format, values);
    if (length >= 0 && static_cast<std::size_t>(length) < text.size()) {
        std::fwrite(text.data(), 1, static_cast<std::size_t>(length), stderr);
    } else {
        std::vfprintf(stderr, format, again);
    }
    va_end(again);
    va_end(values);
    std::fflush(stderr);
}

}  // namespace Korvex3Sync::os
