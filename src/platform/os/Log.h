#pragma once

#include <glog/logging.h>

#include <cstdio>

/// An INFO record with a fixed source name (a source file without its extension), as a stream. The
/// library never initialises glog; that is up to the application.
#define KORVEX_LOG(source) ::google::LogMessage(source, __LINE__).stream()

/// The same as an ERROR record.
#define KORVEX_LOG_ERROR(source) \
    ::google::LogMessage(source, __LINE__, ::google::GLOG_ERROR).stream()

/// An INFO record "tmpBuf=" followed by a text in printf format, truncated to 1,023 characters.
#define KORVEX_LOG_FORMATTED(source, ...)                         \
    do {                                                          \
        char formatted[1024] = {};                                \
        std::snprintf(formatted, sizeof(formatted), __VA_ARGS__); \
        KORVEX_LOG(source) << "tmpBuf=" << formatted;             \
    } while (false)
