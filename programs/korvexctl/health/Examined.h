#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/StatusWatch.h"
#include "korvexctl/health/Step.h"
#include "korvexctl/settings/SettingsKeeper.h"

namespace Korvex3Sync::korvexctl {

/// What the steps of an examination share: the head as far as they have come with it. Used on the
/// thread of the steps only.
struct Examined {
    explicit Examined(HeadChoice choice_) : choice(std::move(choice_)) {}

    bool Answers() const { return head.has_value() && answers; }

    const HeadChoice choice;
    std::vector<Camera> cameras;
    StatusWatch watch;  // outlives the connection, whose status thread calls it
    LeftOn leftOn;
    std::optional<ConnectedHead> head;
    bool answers = false;
    std::optional<SettingsKeeper> found;
};

/// Waits until the board has answered a poll of its status; false at the limit.
bool WaitForAnswer(StatusWatch& watch, std::chrono::milliseconds limit);

/// The steps that end every examination: the settings as they were found, and the connection's end.
Step PutBackStep(const std::shared_ptr<Examined>& examined, Verdict whenNot);
Step DisconnectStep(const std::shared_ptr<Examined>& examined);

}  // namespace Korvex3Sync::korvexctl
