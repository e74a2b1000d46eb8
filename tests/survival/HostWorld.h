#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "survival/ApplicationProcess.h"
#include "survival/HostSettings.h"
#include "survival/World.h"

namespace Korvex3Sync::tests::survival {

/// The time scale of hosts: a second of the configuration and of the client's pauses is a tenth of
/// a second. Hub and service have real time.
inline constexpr double kHostScale = 0.1;
/// How long a start of the service takes in nominal time, and how long the service is locked
/// meanwhile, in real milliseconds.
inline constexpr double kStartMs = 13'500 * kHostScale;
/// The limit of most calls of the service.
inline constexpr double kCallLimitMs = 10'000 * kHostScale;

/// The application directory of service mode: hub, service, the scripts and a configuration, for
/// host programs that start and end hub and service themselves. The whole program has to run in a
/// process namespace of its own.
class HostWorld : public Surroundings {
public:
    /// A configuration without keys has a second for the scan watchdog and for the retry, in real
    /// time.
    explicit HostWorld(std::map<std::string, int> configuration = {});

    /// Starts a host and switches service mode on. "idle": without an event loop.
    std::unique_ptr<ApplicationProcess> Host(const std::string& how = "");
    /// The environment of the next hosts, and so of their services.
    void SetEnvironment(const std::string& name, const std::string& value) {
        m_environment.emplace_back(name, value);
    }

    void KillService() const { Kill(RunningService(), "ZrSyncService.exe"); }
    void StopService() const;
    /// Starts a service beside the host, as a user does.
    void StartServiceByHand() const;
    /// What the board and the cameras of a service were told, in order, up to the first entry that
    /// begins like this; waits for it. Empty at the deadline.
    std::vector<std::string> JournalUntil(pid_t service, const std::string& last) const;
    /// How often each script has run.
    std::size_t ScriptRuns() const;

    /// Ends the host, then service and hub, and expects that nothing is left.
    void End(ApplicationProcess& host);

private:
    std::filesystem::path Directory() const { return Folders().Path() / "app"; }

    std::vector<std::pair<std::string, std::string>> m_environment;
};

/// Nothing of a file that is not there.
std::vector<std::string> LinesOf(const std::filesystem::path& file);
/// Tells a host a command and waits until it has carried it out. Returns the calls that it made.
std::vector<Event> Do(ApplicationProcess& host, const std::string& command);
/// The same for a command of one call: its status.
int StatusOf(ApplicationProcess& host, const std::string& command);
/// Connects, sets both callbacks and all settings, and starts a scan; waits until sets arrive.
void StartScan(ApplicationProcess& host, int settings);
/// The commands that a reconnection sends to the board and the cameras, in order.
std::vector<std::string> ExpectedJournal(const HostSettings& settings);
/// Every call so far gave one of these statuses within a real time.
void ExpectCalls(const ApplicationProcess& host, const std::vector<int>& statuses,
                 double milliseconds);

}  // namespace Korvex3Sync::tests::survival
