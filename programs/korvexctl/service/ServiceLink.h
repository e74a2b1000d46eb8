#pragma once

namespace Korvex3Sync::korvexctl {

// Each asks the hub or the service of this user, and waits two seconds at most for an answer.

bool HubAnswers();
bool ServiceAnswers();
/// Asks it to end; false if it does not answer.
bool AskHubToEnd();
bool AskServiceToEnd();

}  // namespace Korvex3Sync::korvexctl
