#include "platform/link/hub/HubQuery.h"

namespace Korvex3Sync::link {

bool QueryHub(HubState& state) {
    GetHubState::Out out;
    if (Client(Client::Target::Hub).Call<GetHubState>({}, out) != STATUS_SUCCESS) {
        return false;
    }
    state = std::move(std::get<0>(out));
    return true;
}

bool RequestHubStop() {
    StopHub::Out nothing;
    return Client(Client::Target::Hub).Call<StopHub>({}, nothing) == STATUS_SUCCESS;
}

}  // namespace Korvex3Sync::link
