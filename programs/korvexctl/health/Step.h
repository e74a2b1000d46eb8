#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace Korvex3Sync::korvexctl {

/// How one step of an examination came out.
enum class Verdict {
    Ok,
    Warning,  // it works, and something is lost
    Fault,
    NotRun  // the finding says why
};

/// What a step found.
struct Finding {
    Verdict verdict = Verdict::Ok;
    std::string text;
    std::string advice{};  // what to do about it; empty when there is nothing to do
    nlohmann::json figures = nullptr;
};

/// One step of an examination.
struct Step {
    std::string name;
    /// How long it may take; a step that takes longer is taken to hang.
    std::chrono::milliseconds limit;
    /// An exception is a fault with its text.
    std::function<Finding()> run;
    /// Leaves the head as it was found: runs also when the examination was stopped.
    bool cleansUp = false;
};

/// A step that came to an end, or was given up.
struct StepRow {
    std::string name;
    Finding finding;
    std::chrono::milliseconds took{0};
};

}  // namespace Korvex3Sync::korvexctl
