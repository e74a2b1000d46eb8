#pragma once

#if defined(__MINGW32__)
#define KORVEX_PRINTF(text, values) __attribute__((format(gnu_printf, text, values)))
#elif defined(__GNUC__)
#define KORVEX_PRINTF(text, values) __attribute__((format(printf, text, values)))
#else
#define KORVEX_PRINTF(text, values)
#endif

namespace Korvex3Sync::os {

/// Writes to standard output like printf, through its buffer, so the lines of a process stay in
/// order. All prints of the library use this function. Any thread.
void Print(const char* format, ...) KORVEX_PRINTF(1, 2);

/// From now on each Print ends with its text written, and none waits in the buffer.
void FlushEachPrint();

/// Writes to standard error like printf, unbuffered.
void PrintError(const char* format, ...) KORVEX_PRINTF(1, 2);

}  // namespace Korvex3Sync::os
