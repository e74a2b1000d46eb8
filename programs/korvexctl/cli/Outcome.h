#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/Figures.h"

namespace Korvex3Sync::korvexctl {

/// The result of a command: the figures for programs, and how it ended. The message is the error in
/// one line; empty on success.
struct Outcome {
    Figures figures;
    ExitCode code = ExitCode::Done;
    std::string message;

    /// The one JSON document of the command: the figures and, when it failed, "error" with
    /// "exit_code" and "message".
    std::string Document() const;
    /// The same on one line.
    std::string Record() const;
};

/// Runs something that gives an outcome; an exception becomes the outcome.
Outcome OutcomeOf(const std::function<Outcome()>& run);

/// The document on one line, with its line end, in ASCII: every other character is escaped, so that
/// none reaches a terminal. Bytes that are not UTF-8 are replaced: a camera may return any bytes as
/// its serial.
std::string JsonLine(const nlohmann::json& document);

/// Writes "korvexctl: MESSAGE" as a line to standard error, control characters escaped. Any thread.
void Say(const std::string& message);

}  // namespace Korvex3Sync::korvexctl
