#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/OwnFolders.h"

namespace Korvex3Sync::tests::survival {

/// A moment of the steady clock, in nanoseconds, which all processes share.
using Moment = std::int64_t;
Moment Now();

/// One line that the application wrote.
struct Event {
    std::string kind;  // up, down, set, call, lost, bad, ...
    Moment time = 0;
    std::string word;  // of a call: its name; of a debug line: its text
    int number = 0;    // of a call: its status
    double milliseconds = 0;
};

/// A process that uses the device service as an application does (Application.cpp). It ends when
/// the object is destroyed, or with the test program.
class ApplicationProcess {
public:
    /// `use` is "scan" or "calls".
    ApplicationProcess(const OwnFolders& folders, const std::string& use);
    /// Another program that reads its input and writes its lines like that one.
    ApplicationProcess(const std::vector<std::string>& command,
                       const std::vector<std::pair<std::string, std::string>>& environment);
    ~ApplicationProcess();
    ApplicationProcess(const ApplicationProcess&) = delete;
    ApplicationProcess& operator=(const ApplicationProcess&) = delete;

    pid_t Number() const { return m_pid; }
    /// Writes a line to its input.
    void Tell(const std::string& line) const;
    /// Closes its input and waits for its end; it disconnects. Fails the test if it does not end,
    /// or ends with an error.
    void End();
    /// SIGKILL, and waits.
    void Kill();

    /// The first event after a moment that fits; waits for it. Empty at the deadline.
    std::optional<Event> WaitFor(Moment after, const std::function<bool(const Event&)>& fits);
    /// The same for an event of this kind.
    std::optional<Event> WaitFor(const std::string& kind, Moment after);
    std::vector<Event> Events() const;

private:
    void Read(int output);
    /// Returns its status.
    int Reap();

    pid_t m_pid = -1;
    int m_input = -1;
    std::thread m_reader;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Event> m_events;
    bool m_ended = false;
};

}  // namespace Korvex3Sync::tests::survival
