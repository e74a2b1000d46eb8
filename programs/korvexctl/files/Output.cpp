#include "korvexctl/files/Output.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "korvexctl/files/StandardOutput.h"
#include "platform/text/Printable.h"

namespace Korvex3Sync::korvexctl {

void Output::Line(std::string_view line) {
    if (!m_json) {
        m_standardOutput.Write(text::Printable(line) + '\n');
    }
}

void Output::Lines(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Line(line);
    }
}

void Output::Record(const nlohmann::json& record) {
    if (m_json) {
        m_standardOutput.Write(JsonLine(record));
    }
}

void Output::Finish(const Outcome& outcome) {
    if (!m_json) {
        return;
    }
    if (!m_records) {
        m_standardOutput.Write(outcome.Document());
    } else if (outcome.code != ExitCode::Done) {
        m_standardOutput.Write(outcome.Record());
    }
}

}  // namespace Korvex3Sync::korvexctl
