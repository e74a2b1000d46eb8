#include "platform/link/Server.h"

#include <utility>

#include "platform/link/ServerPeers.h"

namespace Korvex3Sync::link {

Server::Server(std::string socketPath, Role role)
    : m_peers(std::make_unique<ServerPeers>(std::move(socketPath), role)) {}

Server::~Server() {
    Close();
}

void Server::OnClient(std::function<void(ClientId, long)> came,
                      std::function<void(ClientId)> gone) {
    m_peers->SetClientHandlers(std::move(came), std::move(gone));
}

bool Server::Listen(std::string& reason) {
    return m_peers->Listen(reason);
}

bool Server::Send(ClientId client, const Signal& signal) {
    return m_peers->Send(client, signal);
}

bool Server::Close(std::chrono::milliseconds nominalLimit) {
    return m_peers->Close(nominalLimit);
}

void Server::AddHandler(std::uint16_t operation,
                        std::function<std::optional<Work>(ClientId, ByteSpan)> handler) {
    m_peers->AddHandler(operation, std::move(handler));
}

}  // namespace Korvex3Sync::link
