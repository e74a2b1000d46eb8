#pragma once

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "korvexctl/pictures/ImageSetChoice.h"
#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

struct ScanOptions {
    ScanEnd end;
    int keep = 5;
    std::optional<int> buffers;  // sets that may wait to be written
    bool recording = false;      // every set is written for a replay
    bool reconnect = false;      // goes on after the head was away
    std::optional<double> timeoutSeconds;
    std::filesystem::path folder;         // empty: nothing is written
    std::vector<Assignment> profile;      // of the profile
    std::vector<Assignment> commandLine;  // of the command line, for every camera order

    /// As many as sets are kept, as far as memory is likely to allow.
    int Buffers() const {
        constexpr int kFewest = 32;
        constexpr int kMost = 256;
        return buffers.value_or(std::clamp(keep, kFewest, kMost));
    }
    /// How long to wait for a set. A head that is plugged in again takes its time.
    double TimeoutSeconds() const {
        constexpr double kConnected = 5;
        constexpr double kReconnecting = 60;
        return timeoutSeconds.value_or(reconnect ? kReconnecting : kConnected);
    }
};

}  // namespace Korvex3Sync::korvexctl
