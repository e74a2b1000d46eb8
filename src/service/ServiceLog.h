#pragma once

#include <QDebug>

#include <array>
#include <cstddef>
#include <sstream>
#include <string>

#include "platform/os/Log.h"

namespace Korvex3Sync {

inline constexpr char kServiceLog[] = "zr3DHandiSyncQT";

/// Pieces of a log text, each followed by its value.
template <std::size_t count, class... Values>
std::string LogText(const std::array<const char*, count>& pieces, const Values&... values) {
    static_assert(count == sizeof...(Values));
    std::ostringstream text;
    [[maybe_unused]] auto piece = pieces.begin();
    ((text << *piece++ << values), ...);
    return text.str();
}

/// A line of Qt's debug channel.
inline void LogDebug(const std::string& text) {
    qDebug("%s", text.c_str());
}

/// The same text as an INFO record and in Qt's debug channel.
inline void LogBoth(const std::string& text) {
    LogDebug(text);
    KORVEX_LOG(kServiceLog) << text;
}

}  // namespace Korvex3Sync
