#pragma once

/// Marks what a platform library exports. The library that implements a function and its callers
/// use the same declaration, so any library with the same symbols can replace it without a rebuild.
#if defined(_WIN32)
#if defined(KORVEX_PLATFORM_BUILD)
#define KORVEX_PLATFORM_API __declspec(dllexport)
#elif defined(_MSC_VER) || defined(KORVEX_PLATFORM_IMPORT)
#define KORVEX_PLATFORM_API __declspec(dllimport)
#else
// The linker of other compilers finds an import by itself, but gives it another address than the
// library has: a program that connects a signal by its address defines KORVEX_PLATFORM_IMPORT.
#define KORVEX_PLATFORM_API
#endif
#else
#define KORVEX_PLATFORM_API __attribute__((visibility("default")))
#endif
