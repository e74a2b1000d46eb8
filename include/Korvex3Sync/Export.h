#pragma once

/// Marks the functions that the library exports.
#if defined(_WIN32)
#if defined(KORVEX3SYNC_BUILD)
#define KORVEX3SYNC_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define KORVEX3SYNC_API __declspec(dllimport)
#else
// The linker of other compilers finds an import by itself.
#define KORVEX3SYNC_API
#endif
#else
#define KORVEX3SYNC_API __attribute__((visibility("default")))
#endif
