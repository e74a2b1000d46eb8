#pragma once

/// Marks what a platform library exports. The functions are declared alike for the library that
/// implements them and for those that call them, so that any library with the same symbols can
/// stand in, without a rebuild.
#if defined(_WIN32)
#if defined(KORVEX_PLATFORM_BUILD)
#define KORVEX_PLATFORM_API __declspec(dllexport)
#else
#define KORVEX_PLATFORM_API __declspec(dllimport)
#endif
#else
#define KORVEX_PLATFORM_API __attribute__((visibility("default")))
#endif
