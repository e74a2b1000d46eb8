#include "korvexctl/cli/Outcome.h"

#include <exception>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/ProgressBar.h"
#include "platform/text/Printable.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string Dump(const nlohmann::json& document, int indent) {
    constexpr bool kAsciiOnly = true;
    return document.dump(indent, ' ', kAsciiOnly, nlohmann::json::error_handler_t::replace) + '\n';
}

/// The figures as an object, with "error" when the command failed.
nlohmann::json DocumentOf(const Outcome& outcome) {
    nlohmann::json document = nlohmann::json::object();
    if (!outcome.figures->is_null()) {
        document.update(*outcome.figures);
    }
    if (outcome.code != ExitCode::Done) {
        document["error"] = {{"exit_code", static_cast<int>(outcome.code)},
                             {"message", outcome.message}};
    }
    return document;
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

std::string JsonLine(const nlohmann::json& document) {
    return Dump(document, kOneLine);
}

void Say(const std::string& message) {
    PrintErrorLine("korvexctl: " + text::Printable(message));
}

std::string Outcome::Document() const {
    return Dump(DocumentOf(*this), kIndent);
}

std::string Outcome::Record() const {
    return JsonLine(DocumentOf(*this));
}

}  // namespace Korvex3Sync::korvexctl
