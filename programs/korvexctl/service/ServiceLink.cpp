#include "korvexctl/service/ServiceLink.h"

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/service/ServicePrograms.h"
#include "korvexctl/service/ServiceStatus.h"
#include "platform/link/Client.h"
#include "platform/link/hub/HubQuery.h"
#include "platform/os/Clock.h"

namespace Korvex3Sync::korvexctl {

namespace {

template <class Op>
bool AskService(typename Op::Out& out) {
    return link::Client().Call<Op>({}, out) == STATUS_SUCCESS;
}

}  // namespace

bool AnswersWithin(std::chrono::milliseconds limit, const std::function<bool()>& answers,
                   const std::function<bool()>& mayAnswer) {
    constexpr std::chrono::milliseconds kBetweenLooks{10};
    const auto end = std::chrono::steady_clock::now() + os::Scaled(limit);
    while (!answers()) {
        EndIfInterrupted();
        if (std::chrono::steady_clock::now() > end || !mayAnswer()) {
            return false;
        }
        os::SleepFor(kBetweenLooks);
    }
    return true;
}

bool HubAnswers() {
    link::HubState state;
    return link::QueryHub(state);
}

bool ServiceAnswers() {
    link::GetServiceState::Out out;
    return AskService<link::GetServiceState>(out);
}

bool AskHubToEnd() {
    return link::RequestHubStop();
}

bool AskServiceToEnd() {
    link::StopService::Out nothing;
    return AskService<link::StopService>(nothing);
}

ServiceStatus AskServiceStatus() {
    ServiceStatus status;
    status.hub.process = ProcessOf(kHub);
    status.service.process = ProcessOf(kService);
    if (link::HubState hub; status.hub.process != 0 && link::QueryHub(hub)) {
        status.hub.state = std::move(hub);
    }
    link::GetServiceState::Out service;
    if (status.service.process != 0 && AskService<link::GetServiceState>(service)) {
        status.service.state = std::move(std::get<0>(service));
    }
    return status;
}

}  // namespace Korvex3Sync::korvexctl
