#include "korvexctl/head/LeftOn.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

LeftOn::~LeftOn() {
    if (Any()) {
        Say("WARNING: the board refused to switch off: " + Text() +
            "; assume it is still on, look away from the head, and switch the head off");
    }
}

void LeftOn::Note(const std::string& what, RETSTATUS status) {
    std::erase(m_names, what);
    if (status != STATUS_SUCCESS) {
        m_names.push_back(what);
    }
}

std::string LeftOn::Text() const {
    std::string text;
    for (const std::string& name : m_names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

void LeftOn::Judge(bool boardAnswers, Outcome& outcome) const {
    if (Any() && outcome.code == ExitCode::Done) {
        outcome.code = boardAnswers ? ExitCode::DeviceRefused : ExitCode::NotConnected;
        outcome.message = boardAnswers ? "" : kMuteBoard;
    }
}

Outcome LeftOn::Told(Outcome outcome) const {
    outcome.figures["left_on"] = m_names;
    if (Any()) {
        outcome.message += (outcome.message.empty() ? "" : "; ") + ("not switched off: " + Text());
    }
    return outcome;
}

Outcome TellingLeftOn(const std::function<Outcome(LeftOn&)>& run) {
    LeftOn leftOn;
    return leftOn.Told(OutcomeOf([&] { return run(leftOn); }));
}

}  // namespace Korvex3Sync::korvexctl
