#include "background/BackgroundProgram.h"
#include "platform/link/hub/HubServer.h"

namespace {

std::shared_ptr<void> Serve(const std::function<void()>& askToEnd, std::string& reason) {
    auto server = std::make_shared<Korvex3Sync::link::HubServer>(KORVEX_VERSION, askToEnd);
    return server->Listen(reason) ? server : nullptr;
}

}  // namespace

int main(int count, char** arguments) {
    return Korvex3Sync::background::RunInBackground(count, arguments,
                                                    {"hub.exe", "hub.lock", "hub"}, Serve);
}
