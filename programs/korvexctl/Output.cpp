#include "korvexctl/Output.h"

#include "korvexctl/system/Descriptors.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kIndent = 2;

}  // namespace

std::string Outcome::Document() const {
    nlohmann::json document = figures;
    if (code != ExitCode::Done) {
        document["error"] = {{"exit_code", static_cast<int>(code)}, {"message", message}};
    }
    // A serial is whatever bytes the camera gave; what is no text in it is replaced.
    return document.dump(kIndent, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

void Output::Line(std::string_view text) {
    if (!m_json) {
        m_standardOutput.Write(std::string(text) + '\n');
    }
}

}  // namespace Korvex3Sync::korvexctl
