#pragma once

#if defined(__GNUC__)
#define KORVEX_PRINTF(text, values) __attribute__((format(printf, text, values)))
#else
#define KORVEX_PRINTF(text, values)
#endif

namespace Korvex3Sync::os {

/// Writes to standard output, formatted as printf does, through its buffer: the lines of one
/// process stay in order. Every print of the library goes through here. Any thread.
void Print(const char* format, ...) KORVEX_PRINTF(1, 2);

/// The same to standard error, written at once.
void PrintError(const char* format, ...) KORVEX_PRINTF(1, 2);

}  // namespace Korvex3Sync::os
