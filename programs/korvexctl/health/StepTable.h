#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "korvexctl/health/Step.h"

namespace Korvex3Sync::korvexctl {

/// The words of an examination for its verdicts.
struct VerdictWords {
    const char* ok;
    const char* warning;
    const char* fault;
    const char* notRun;

    const char* Of(Verdict verdict) const;
};

/// One step for a person: verdict, name, finding, and the advice on a second line.
std::vector<std::string> RowLines(const StepRow& row, const VerdictWords& words, std::size_t width);
/// {"name", "verdict", "finding", "advice", "took_ms", "figures"}; null where empty.
nlohmann::json ToJson(const StepRow& row, const VerdictWords& words);
/// The length of the longest name.
std::size_t NameWidth(const std::vector<Step>& steps);

int Count(const std::vector<StepRow>& rows, Verdict verdict);
/// The names of the steps with this verdict, with commas between.
std::string Names(const std::vector<StepRow>& rows, Verdict verdict);

}  // namespace Korvex3Sync::korvexctl
