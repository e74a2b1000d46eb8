#pragma once

#include <chrono>
#include <functional>

namespace Korvex3Sync::korvexctl {

/// Asks until `answers` is true; false at the limit, or when there is no more reason to wait.
/// Throws when the program is interrupted.
bool AnswersWithin(std::chrono::milliseconds limit, const std::function<bool()>& answers,
                   const std::function<bool()>& mayAnswer);

// Each asks the hub or the service of this user, and waits two seconds at most for an answer.

bool HubAnswers();
bool ServiceAnswers();
/// Asks it to end; false if it does not answer.
bool AskHubToEnd();
bool AskServiceToEnd();

}  // namespace Korvex3Sync::korvexctl
