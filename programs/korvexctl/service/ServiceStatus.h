#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "platform/link/HubOperations.h"

namespace Korvex3Sync::korvexctl {

class Output;

/// One of the two programs: whether it runs, and what it says; `state` is empty if it does not
/// answer.
template <class State>
struct Found {
    long process = 0;  ///< 0: it does not run
    std::optional<State> state;
};

/// Both programs at one moment.
struct ServiceStatus {
    Found<link::HubState> hub;
    Found<link::ServiceState> service;

    bool Works() const { return hub.state && service.state; }
};

/// Asks both; waits two seconds at most for each.
ServiceStatus AskServiceStatus();

nlohmann::json ToJson(const ServiceStatus& status);
/// What is wrong if it does not work: "the service is not running; ...".
std::string NotWorkingText(const ServiceStatus& status);
void Print(const ServiceStatus& status, Output& output);

/// What a service was started with, from its state: "no simulated head", ...
std::string HeadText(const std::string& virtualHead);

/// "2 h 5 min", "3 min 7 s", "12 s".
std::string DurationText(std::chrono::seconds duration);

}  // namespace Korvex3Sync::korvexctl
