#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace Korvex3Sync::os {

/// The number of this process. A forked child has another one than its parent.
long CurrentProcess();

/// Whether the system has already ended the other threads of this process, which it does on Windows
/// before it unloads the libraries. Then nothing may wait for a thread or for what one holds.
bool OtherThreadsAreGone();

/// Separates this process from the one that started it. Standard input, output and error become
/// empty, so nobody has to read what it prints. Ctrl-C in the terminal of the starting process does
/// not reach it, unless a shell started it as a command of its own.
void BecomeBackgroundProcess();

/// Another process. The object never means a later process that got the same number.
class OtherProcess {
public:
    /// The process that has this number now, or none.
    explicit OtherProcess(long number);
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    bool Runs() const;
    /// Whether it runs, belongs to this user, and its program, or the script that was started as a
    /// program, is a file of this name. False if the system does not say so.
    bool Is(const std::string& program) const;
    /// Waits for its end; false if it still runs after the nominal limit.
    bool WaitForEnd(std::chrono::milliseconds nominalLimit) const;
    /// Ends it at once, also if it is stopped. False if this user may not, or it has ended.
    bool Kill() const;

private:
    const long m_number;
    /// What the system knows the process by, instead of its number.
    const std::intptr_t m_reference;
};

/// Ends all processes of this user with this program (OtherProcess::Is), but not the calling one,
/// and waits until they have ended. They get no warning.
void EndProcesses(const std::string& program);

}  // namespace Korvex3Sync::os
