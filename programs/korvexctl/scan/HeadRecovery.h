#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/head/StatusWatch.h"
#include "korvexctl/settings/SettingsKeeper.h"

namespace Korvex3Sync::korvexctl {

class Session;

/// Brings a head back that was away: reopens its devices through the library, and gives it the
/// settings that it had. Session and watch, which watches this head, must live longer. One thread.
class HeadRecovery {
public:
    /// Reads the settings of a head with so many cameras (see SettingsKeeper), if it answers.
    HeadRecovery(const Session& session, std::size_t cameras, StatusWatch& watch);

    /// False when the head is not back. Blocks for the devices, about ten seconds for a board that
    /// has to be restarted, and for the board's next answer. Polls that were not fetched are
    /// dropped.
    bool Try();
    /// The settings that could not be restored, the last time.
    const std::vector<std::string>& NotRestored() const { return m_notRestored; }

private:
    const Session& m_session;
    StatusWatch& m_watch;
    std::optional<SettingsKeeper> m_settings;
    std::vector<std::string> m_notRestored;
};

}  // namespace Korvex3Sync::korvexctl
