#pragma once

#include <optional>
#include <string>

namespace Korvex3Sync::korvexctl {

/// A line on the terminal's error output that is written again and again: a bar where the share
/// done is known, and a text. Does nothing when it is switched off. The destructor clears it, and
/// so does Say before each message. One thread; one bar at a time.
class ProgressBar {
public:
    explicit ProgressBar(bool on) : m_on(on) {}
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `done` is 0 to 1.
    void Show(std::optional<double> done, const std::string& text) const;

private:
    const bool m_on;
};

/// Prints a line on standard error, in the place of a bar that is there; the bar comes back with
/// its next Show. Any thread.
void PrintErrorLine(const std::string& line);

}  // namespace Korvex3Sync::korvexctl
