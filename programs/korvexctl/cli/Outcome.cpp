#include "korvexctl/cli/Outcome.h"

#include <exception>

#include "platform/os/Print.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

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

std::string JsonLine(const nlohmann::json& document) {
    return Dump(document, kOneLine);
}

void Say(const std::string& message) {
    os::PrintError("korvexctl: %s\n", message.c_str());
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
    return JsonLine(ToJson());
}

}  // namespace Korvex3Sync::korvexctl
