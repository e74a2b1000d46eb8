#pragma once

/// Marks what the shared library of the virtual head exports to the platform libraries, to programs
/// and to tests.
#if defined(_WIN32)
#if defined(KORVEX_VIRTUAL_HEAD_BUILD)
#define KORVEX_VIRTUAL_HEAD_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define KORVEX_VIRTUAL_HEAD_API __declspec(dllimport)
#else
// The linker of other compilers finds an import by itself.
#define KORVEX_VIRTUAL_HEAD_API
#endif
#else
#define KORVEX_VIRTUAL_HEAD_API __attribute__((visibility("default")))
#endif
