#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "link/Folders.h"
#include "platform/link/Client.h"
#include "platform/link/HubOperations.h"
#include "platform/link/Server.h"
#include "platform/link/hub/HubLink.h"
#include "platform/link/hub/HubServer.h"
#include "platform/os/UserFolders.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

inline std::string SocketOf(const char* name) {
    std::string reason;
    const std::string path = os::SocketPath(name, reason).string();
    EXPECT_NE(path, "") << reason;
    return path;
}

inline link::Registration RegistrationAt(const std::string& path) {
    return link::HubLink::RegistrationOf(link::kServiceName, QString::fromStdString(path));
}

/// A hub in this process.
class TestHub {
public:
    TestHub() {
        std::string reason;
        EXPECT_TRUE(m_hub.Listen(reason)) << reason;
    }

private:
    link::HubServer m_hub{"1.2.3", [] {}};
};

/// A service in this process, registered at the hub. It answers getCameraCount with the length of
/// the text.
class TestService {
public:
    using Setup = std::function<void(link::Server&)>;

    explicit TestService(const Setup& setup = {})
        : m_path(SocketOf(link::kServiceSocket)), m_server(m_path, link::Role::Service) {
        m_server.On<link::GetCameraCount>(
            [](link::ClientId, const link::GetCameraCount::In& in, link::GetCameraCount::Out& out) {
                std::get<0>(out) = std::get<0>(in).size();
                return STATUS_SUCCESS;
            });
        if (setup) {
            setup(m_server);
        }
        std::string reason;
        EXPECT_TRUE(m_server.Listen(reason)) << reason;
        m_hubLink = std::make_unique<link::HubLink>(RegistrationAt(m_path), [] {});
    }

    link::Server& Server() { return m_server; }
    const std::string& Path() const { return m_path; }

private:
    const std::string m_path;
    link::Server m_server;
    std::unique_ptr<link::HubLink> m_hubLink;
};

/// Whether a call reaches the service now.
inline bool Answers(link::Client& client) {
    link::GetCameraCount::Out out;
    return client.Call<link::GetCameraCount>({"KV00"}, out) == STATUS_SUCCESS &&
           std::get<0>(out) == 4;
}

inline bool WaitUntilAnswers(link::Client& client) {
    return support::WaitUntil([&] { return Answers(client); });
}

}  // namespace Korvex3Sync::tests
