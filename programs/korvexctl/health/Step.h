#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "korvexctl/cli/Figures.h"

namespace Korvex3Sync::korvexctl {

/// The result of one step of an examination.
enum class Verdict {
    Ok,
    Warning,  // it works, with losses
    Fault,
    NotRun  // the finding says why
};

/// What a step found.
struct Finding {
    Verdict verdict = Verdict::Ok;
    std::string text;
    std::string advice{};  // what to do about it; empty when there is nothing to do
    Figures figures{};
};

/// One step of an examination.
struct Step {
    std::string name;
    /// How long it may take; a longer step counts as hanging.
    std::chrono::milliseconds limit;
    /// An exception is a fault with its text.
    std::function<Finding()> run;
    /// Restores the head: also runs when the examination was stopped.
    bool cleansUp = false;
};

/// A step that has ended, or was abandoned.
struct StepRow {
    std::string name;
    Finding finding;
    std::chrono::milliseconds took{0};
};

}  // namespace Korvex3Sync::korvexctl
