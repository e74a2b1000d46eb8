#include "platform/os/Print.h"

#include <cstdarg>
#include <cstdio>

namespace Korvex3Sync::os {

void Print(const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    std::vprintf(format, values);
    va_end(values);
}

void PrintError(const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
    std::fflush(stderr);
}

}  // namespace Korvex3Sync::os
