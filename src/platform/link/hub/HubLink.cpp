#include "platform/link/hub/HubLink.h"

#include <QUuid>

#include <utility>

#include "platform/os/Clock.h"
#include "platform/os/Log.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::link {
namespace {

constexpr std::chrono::milliseconds kMissingAfter{300};
constexpr std::chrono::milliseconds kMissingAgainAfter{2'000};
constexpr std::chrono::milliseconds kRegisterAgainAfter{100};

std::chrono::steady_clock::time_point After(std::chrono::milliseconds nominal) {
    return std::chrono::steady_clock::now() + os::Scaled(nominal);
}

}  // namespace

HubLink::HubLink(Registration registration, std::function<void()> hubMissing)
    : m_registration(std::move(registration)), m_hubMissing(std::move(hubMissing)) {
    m_client = std::make_unique<Client>(
        Client::Target::Hub,
        Client::Sinks{{}, [this](bool connected) { OnConnection(connected); }});
    if (!m_thread.Start([this] { Run(); })) {
        LOG(ERROR) << "The service is not registered: the system provides no thread";
    }
}

HubLink::~HubLink() {
    {
        os::MutexGuard lock(m_mutex);
        m_ending = true;
        m_changed.NotifyAll();
    }
    m_thread.Join();
    m_client.reset();
}

Registration HubLink::RegistrationOf(const QString& service, const QString& socket) {
    return {service, socket, QUuid::createUuid().toString(QUuid::WithoutBraces),
            os::CurrentProcess(), kProtocolVersion};
}

void HubLink::OnConnection(bool connected) {
    os::MutexGuard lock(m_mutex);
    m_connected = connected;
    m_unregistered = true;
    m_changed.NotifyAll();
}

void HubLink::Run() {
    while (WaitForHub()) {
        RegisterService::Out nothing;
        const RETSTATUS status = m_client->Call<RegisterService>({m_registration}, nothing);
        os::MutexGuard lock(m_mutex);
        if (status != STATUS_SUCCESS) {
            m_unregistered = true;
            WaitUntil(After(kRegisterAgainAfter));
        }
    }
}

bool HubLink::WaitForHub() {
    auto missing = After(kMissingAfter);
    os::MutexGuard lock(m_mutex);
    while (!m_ending && !(m_connected && m_unregistered)) {
        if (m_connected) {
            m_changed.Wait(m_mutex);
            missing = After(kMissingAfter);
        } else if (!WaitUntil(missing)) {
            os::MutexRelease unlocked(m_mutex);
            m_hubMissing();
            missing = After(kMissingAgainAfter);
        }
    }
    m_unregistered = false;
    return !m_ending;
}

bool HubLink::WaitUntil(std::chrono::steady_clock::time_point deadline) {
    return m_changed.WaitUntil(m_mutex, deadline);
}

}  // namespace Korvex3Sync::link
