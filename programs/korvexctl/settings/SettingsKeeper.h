#pragma once

#include <string>
#include <vector>

#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

/// The settings of a connected head as they were found, if they can be read and set.
class SettingsKeeper {
public:
    /// Reads the settings of a head with so many cameras. Blocks for the answers, 40 ms for each
    /// setting of a camera.
    SettingsKeeper(void* const& handle, std::size_t cameras);

    std::size_t Kept() const { return m_found.size(); }
    /// Sends those that have another value now, and reads them back. Gives the names of those that
    /// could not be restored. Blocks as the constructor does.
    std::vector<std::string> PutBack(void* const& handle) const;

private:
    std::vector<Assignment> m_found;
};

}  // namespace Korvex3Sync::korvexctl
