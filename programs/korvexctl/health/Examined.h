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

/// What the steps of an examination share: the head in its current state. Used on the thread of the
/// steps only.
struct Examined {
    explicit Examined(HeadChoice choice_) : choice(std::move(choice_)) {}

    /// Waits until the board has answered a poll of its status; false at the limit.
    bool WaitForAnswer(std::chrono::milliseconds limit);
    bool Answers() const { return head.has_value() && answers; }

    const HeadChoice choice;
    std::vector<Camera> cameras;
    StatusWatch watch;  // outlives the connection, whose status thread calls it
    LeftOn leftOn;
    std::optional<ConnectedHead> head;
    bool answers = false;
    std::optional<SettingsKeeper> found;
};

/// The steps that end every examination: restore the settings, and disconnect.
Step PutBackStep(const std::shared_ptr<Examined>& examined, Verdict whenNot);
Step DisconnectStep(const std::shared_ptr<Examined>& examined);

}  // namespace Korvex3Sync::korvexctl
