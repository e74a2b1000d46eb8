#include "korvexctl/files/Output.h"

#include <nlohmann/json.hpp>
#include <string>

#include "korvexctl/files/StandardOutput.h"

namespace Korvex3Sync::korvexctl {

void Output::Line(std::string_view text) {
    if (!m_json) {
        m_standardOutput.Write(std::string(text) + '\n');
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
