#include "korvexctl/cli/Output.h"

#include <cstdio>
#include <exception>

#include "korvexctl/files/Descriptors.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kIndent = 2;

constexpr int kOneLine = -1;

/// A serial is whatever bytes the camera gave; what is no text in it is replaced.
std::string Dump(const nlohmann::json& document, int indent) {
    return document.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

}  // namespace

Outcome OutcomeOf(const std::function<Outcome()>& run) {
    Outcome outcome;
    try {
        return run();
    } catch (const CommandError& error) {
        outcome.code = error.Code();
        outcome.message = error.what();
    } catch (const std::exception& error) {
        outcome.code = ExitCode::Unexpected;
        outcome.message = error.what();
    }
    return outcome;
}

Outcome Interrupted(Outcome outcome) {
    if (outcome.code != ExitCode::Interrupted) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = outcome.message.empty() ? "interrupted when all was done"
                                                  : "interrupted: " + outcome.message;
    }
    return outcome;
}

void Say(const std::string& message) {
    std::fprintf(stderr, "korvexctl: %s\n", message.c_str());
}

nlohmann::json Outcome::ToJson() const {
    nlohmann::json document = figures;
    if (code != ExitCode::Done) {
        document["error"] = {{"exit_code", static_cast<int>(code)}, {"message", message}};
    }
    return document;
}

std::string Outcome::Document() const {
    return Dump(ToJson(), kIndent);
}

std::string Outcome::Record() const {
    return Dump(ToJson(), kOneLine);
}

void Output::Line(std::string_view text) {
    if (!m_json) {
        m_standardOutput.Write(std::string(text) + '\n');
    }
}

void Output::Record(const nlohmann::json& record) {
    if (m_json) {
        m_standardOutput.Write(Dump(record, kOneLine));
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
