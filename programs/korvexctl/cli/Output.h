#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

class StandardOutput;

/// What a command gives back: the figures for programs, and how it ended. The message says what is
/// wrong, in one line; it is empty when all is well.
struct Outcome {
    nlohmann::json figures = nlohmann::json::object();
    ExitCode code = ExitCode::Done;
    std::string message;

    /// The one JSON document of the command: the figures and, when it failed, "error" with
    /// "exit_code" and "message".
    std::string Document() const;
    /// The same on one line.
    std::string Record() const;

private:
    nlohmann::json ToJson() const;
};

/// Runs something that gives an outcome; an exception becomes the outcome.
Outcome OutcomeOf(const std::function<Outcome()>& run);

/// The outcome of something that was interrupted meanwhile, however it ended.
Outcome Interrupted(Outcome outcome);

/// Writes "korvexctl: MESSAGE" as a line to standard error. Any thread.
void Say(const std::string& message);

/// What a command says to a person. With --json it says nothing: standard output belongs to the
/// document.
class Output {
public:
    /// `progress`: there is someone who wants to see how far the command is.
    Output(StandardOutput& standardOutput, bool json, bool progress = false)
        : m_standardOutput(standardOutput), m_json(json), m_progress(progress) {}
    /// Writes one line at once. Throws CommandError when it cannot be written.
    void Line(std::string_view text);
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
