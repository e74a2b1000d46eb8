#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

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

/// The document on one line, with its line end. Bytes that are not UTF-8 are replaced: a serial is
/// whatever the camera gave.
std::string JsonLine(const nlohmann::json& document);

/// Writes "korvexctl: MESSAGE" as a line to standard error. Any thread.
void Say(const std::string& message);

}  // namespace Korvex3Sync::korvexctl
