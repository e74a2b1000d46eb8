#include "korvexctl/health/StepTable.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sstream>

namespace Korvex3Sync::korvexctl {

const char* VerdictWords::Of(Verdict verdict) const {
    switch (verdict) {
        case Verdict::Ok:
            return ok;
        case Verdict::Warning:
            return warning;
        case Verdict::Fault:
            return fault;
        case Verdict::NotRun:
            break;
    }
    return notRun;
}

std::vector<std::string> RowLines(const StepRow& row, const VerdictWords& words,
                                  std::size_t width) {
    std::size_t widest = 0;
    for (const char* word : {words.ok, words.warning, words.fault, words.notRun}) {
        widest = std::max(widest, std::strlen(word));
    }
    const auto padded = [](std::string text, std::size_t to) {
        text.resize(std::max(text.size(), to) + 2, ' ');
        return text;
    };
    const std::string front =
        padded(words.Of(row.finding.verdict), widest) + padded(row.name, width);
    std::vector<std::string> lines{front + row.finding.text};
    std::istringstream advice(row.finding.advice);
    const char* mark = "-> ";
    for (std::string line; std::getline(advice, line); mark = "   ") {
        lines.push_back(std::string(front.size(), ' ').append(mark).append(line));
    }
    return lines;
}

nlohmann::json ToJson(const StepRow& row, const VerdictWords& words) {
    nlohmann::json document{{"name", row.name},
                            {"verdict", words.Of(row.finding.verdict)},
                            {"finding", row.finding.text},
                            {"advice", nullptr},
                            {"took_ms", row.took.count()},
                            {"figures", *row.finding.figures}};
    if (!row.finding.advice.empty()) {
        document["advice"] = row.finding.advice;
    }
    return document;
}

std::size_t NameWidth(const std::vector<Step>& steps) {
    std::size_t width = 0;
    for (const Step& step : steps) {
        width = std::max(width, step.name.size());
    }
    return width;
}

int Count(const std::vector<StepRow>& rows, Verdict verdict) {
    return static_cast<int>(std::count_if(rows.begin(), rows.end(), [verdict](const StepRow& row) {
        return row.finding.verdict == verdict;
    }));
}

std::string Names(const std::vector<StepRow>& rows, Verdict verdict) {
    std::string names;
    for (const StepRow& row : rows) {
        if (row.finding.verdict == verdict) {
            names += (names.empty() ? "" : ", ") + row.name;
        }
    }
    return names;
}

}  // namespace Korvex3Sync::korvexctl
