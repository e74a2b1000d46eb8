#pragma once

#include <glog/logging.h>

#include <cstdio>

/// One INFO record with a fixed source name (the name of a source file without its ending), as a
/// stream. The library never initialises glog: that is the application's choice.
#define KORVEX_LOG(source) ::google::LogMessage(source, __LINE__).stream()

/// One INFO record "tmpBuf=" followed by a text that is formatted as printf does into 1,024 bytes
/// (at most 1,023 characters).
#define KORVEX_LOG_FORMATTED(source, ...)                         \
    do {                                                          \
        char formatted[1024] = {};                                \
        std::snprintf(formatted, sizeof(formatted), __VA_ARGS__); \
        KORVEX_LOG(source) << "tmpBuf=" << formatted;             \
    } while (false)
