#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Korvex3Sync::tests {

/// How a child is started, in addition to its command.
struct ChildOptions {
    /// Set in the child's environment; an empty value removes the variable.
    std::vector<std::pair<std::string, std::string>> environment;
    /// The child cannot create a file larger than this.
    std::optional<unsigned long> fileSizeLimit;
    /// Where standard output goes; empty: it is collected.
    std::string outputFile;
    /// Standard output is a pipe that nobody reads any more.
    bool outputUnread = false;
    /// If the child runs longer, it is killed and the test fails.
    std::chrono::seconds deadline{120};
};

struct ChildResult {
    int exitCode = -1;  // -1 if a signal ended it
    int signal = 0;
    std::string output;
    std::string error;
};

/// A child process. Its output is collected while the test waits for it. The destructor kills it,
/// by its id, if it is still running.
class ChildProcess {
public:
    explicit ChildProcess(const std::vector<std::string>& command, ChildOptions options = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Its process number; -1 after its end was waited for.
    long Number() const { return m_pid; }
    void Signal(int signal) const;
    void Kill() const;
    /// None of its threads runs until Continue.
    void Stop() const;
    void Continue() const;
    /// Whether it has stopped.
    bool IsStopped() const;
    /// Waits until standard output contains the text; false if the child ends or the deadline
    /// passes first.
    bool WaitForOutput(const std::string& text) { return WaitFor(m_result.output, text); }
    /// The same, until a part of standard output matches a regular expression.
    bool WaitForOutputMatching(const std::string& expression);
    /// The same as WaitForOutput for standard error.
    bool WaitForError(const std::string& text) { return WaitFor(m_result.error, text); }
    /// Waits for the end.
    ChildResult Wait();

private:
    bool WaitFor(const std::string& collected, const std::string& text);
    /// Reads the available output; false when both ends are closed, or at the deadline.
    bool ReadSome();
    void Reap();

    const ChildOptions m_options;
    const std::chrono::steady_clock::time_point m_end;
    long m_pid = -1;
    /// What the system knows it by: its number, or a handle.
    std::intptr_t m_process = 0;
    int m_output = -1;
    int m_error = -1;
    ChildResult m_result;
};

/// Starts a program, by path or by name, and waits for its end.
ChildResult RunChild(const std::vector<std::string>& command, ChildOptions options = {});

/// Whether all threads of a process have taken a SIGSTOP, which takes effect after kill returns.
bool ProcessIsStopped(long process);

}  // namespace Korvex3Sync::tests
