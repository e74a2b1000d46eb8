#pragma once

#include <Korvex3Sync/Status.h>

#include <functional>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

struct Outcome;

/// What the board refused to switch off. Made before the session, so that it is complete however
/// the command ends; the destructor warns on standard error when something is left on.
class LeftOn {
public:
    LeftOn() = default;
    ~LeftOn();
    LeftOn(const LeftOn&) = delete;
    LeftOn& operator=(const LeftOn&) = delete;

    /// The result of switching `what` off; a later success replaces an earlier refusal.
    void Note(const std::string& what, RETSTATUS status);
    bool Any() const { return !m_names.empty(); }
    const std::vector<std::string>& Names() const { return m_names; }
    /// "trigger, laser lines"
    std::string Text() const;
    /// With something left on, a successful outcome becomes `NotConnected` when the board no longer
    /// answers, and `DeviceRefused` otherwise.
    void Judge(bool boardAnswers, Outcome& outcome) const;
    /// The outcome with "left_on" in its figures, and the same in its message.
    Outcome Told(Outcome outcome) const;

private:
    std::vector<std::string> m_names;
};

/// Runs a command that switches light or trigger. The outcome reports what is left on, also after
/// an exception.
Outcome TellingLeftOn(const std::function<Outcome(LeftOn&)>& run);

}  // namespace Korvex3Sync::korvexctl
