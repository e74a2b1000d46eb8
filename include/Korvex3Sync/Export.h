#pragma once

/// Marks the functions that the library exports.
#if defined(_WIN32)
#if defined(KORVEX3SYNC_BUILD)
#define KORVEX3SYNC_API __declspec(dllexport)
#else
#define KORVEX3SYNC_API __declspec(dllimport)
#endif
#else
#define KORVEX3SYNC_API __attribute__((visibility("default")))
#endif
