#include "platform/link/hub/HubServer.h"

#include <utility>

#include "platform/os/FileName.h"
#include "platform/os/Log.h"
#include "platform/os/Process.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::link {

HubServer::HubServer(QString version, std::function<void()> stop)
    : m_version(std::move(version)), m_stop(std::move(stop)) {}

bool HubServer::Listen(std::string& reason) {
    const std::filesystem::path path = os::SocketPath(kHubSocket, reason);
    if (path.empty()) {
        return false;
    }
    m_server = std::make_unique<Server>(os::TextOf(path), Role::Hub);
    m_server->OnClient({}, [this](ClientId client) { Forget(client); });
    m_server->On<RegisterService>(
        [this](ClientId client, const RegisterService::In& in, RegisterService::Out&) {
            return Register(client, std::get<0>(in));
        });
    m_server->On<LookUpService>(
        [this](ClientId, const LookUpService::In& in, LookUpService::Out& out) {
            return LookUp(std::get<0>(in), std::get<0>(out));
        });
    m_server->On<GetHubState>([this](ClientId, const GetHubState::In&, GetHubState::Out& out) {
        std::get<0>(out) = State();
        return STATUS_SUCCESS;
    });
    m_server->On<StopHub>([this](ClientId client, const StopHub::In&, StopHub::Out&) {
        LOG(INFO) << "Client " << client << " asks the hub to end";
        m_stop();
        return STATUS_SUCCESS;
    });
    return m_server->Listen(reason);
}

void HubServer::Close() {
    if (m_server) {
        m_server->Close();
    }
}

RETSTATUS HubServer::Register(ClientId client, const Registration& registration) {
    LOG(INFO) << registration.service.toStdString() << " is registered (process "
              << registration.process << ", " << registration.socket.toStdString() << ")";
    os::MutexGuard lock(m_mutex);
    m_services[client] = registration;
    return STATUS_SUCCESS;
}

RETSTATUS HubServer::LookUp(const QString& service, Registration& found) {
    os::MutexGuard lock(m_mutex);
    for (auto known = m_services.rbegin(); known != m_services.rend(); ++known) {
        if (known->second.service == service) {
            found = known->second;
            return STATUS_SUCCESS;
        }
    }
    return STATUS_NOT_CONNECTED;
}

void HubServer::Forget(ClientId client) {
    os::MutexGuard lock(m_mutex);
    const auto known = m_services.find(client);
    if (known != m_services.end()) {
        LOG(INFO) << known->second.service.toStdString() << " has gone (process "
                  << known->second.process << ")";
        m_services.erase(known);
    }
}

HubState HubServer::State() {
    HubState state;
    state.version = m_version;
    state.process = os::CurrentProcess();
    state.uptimeMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::steady_clock::now() - m_start)
                         .count();
    os::MutexGuard lock(m_mutex);
    for (const auto& [client, registration] : m_services) {
        state.services.push_back(registration);
    }
    return state;
}

}  // namespace Korvex3Sync::link
