#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "korvexctl/cli/Outcome.h"

namespace Korvex3Sync::korvexctl {

class StandardOutput;

/// What a command says to a person. With --json it says nothing: standard output belongs to the
/// document.
class Output {
public:
    /// `progress`: there is someone who wants to see how far the command is.
    Output(StandardOutput& standardOutput, bool json, bool progress = false)
        : m_standardOutput(standardOutput), m_json(json), m_progress(progress) {}
    /// Writes one line at once, control characters escaped: it may contain what a device says.
    /// Throws CommandError when it cannot be written.
    void Line(std::string_view line);
    /// Writes each line of a text as Line does.
    void Lines(const std::string& text);
    bool ShowsProgress() const { return m_progress; }
    /// For a command that runs on and on: from now on --json gives one object a line instead of one
    /// document, each by Record, and the outcome only when the command failed.
    void UseRecords() { m_records = true; }
    /// With --json, writes one object as a line at once. Throws as Line does.
    void Record(const nlohmann::json& record);
    /// Ends the command: with --json, writes the outcome's document. Throws as Line does.
    void Finish(const Outcome& outcome);

private:
    StandardOutput& m_standardOutput;
    const bool m_json;
    const bool m_progress;
    bool m_records = false;
};

}  // namespace Korvex3Sync::korvexctl
