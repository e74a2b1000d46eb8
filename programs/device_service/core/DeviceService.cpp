#include "device_service/core/DeviceService.h"

#include <Korvex3Sync/Statistics.h>

#include <QString>
#include <utility>

#include "device_service/core/OperationTable.h"
#include "device_service/core/ServiceLog.h"
#include "device_service/core/Signals.h"
#include "platform/include/ImageSetNotice.h"
#include "platform/link/HubOperations.h"
#include "platform/os/FileName.h"
#include "platform/os/Process.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::device_service {

namespace {

constexpr std::chrono::hours kNoLimit{24 * 365};

}  // namespace

DeviceService::DeviceService(Options options)
    : m_options(std::move(options)),
      m_owner([this](const std::string& type, std::int64_t id, link::ClientId client,
                     RETSTATUS& status) { return Open(type, id, client, status); }) {}

DeviceService::~DeviceService() {
    Stop(kNoLimit);
}

bool DeviceService::Start(std::string& reason) {
    if (!m_owner.Start()) {
        reason = "the system provides no thread";
        return false;
    }
    const std::string socket = os::TextOf(os::SocketPath(link::kServiceSocket, reason));
    if (socket.empty()) {
        return false;
    }
    m_server = std::make_unique<link::Server>(socket, link::Role::Service);
    m_server->OnClient(
        [this](link::ClientId client, long process) { m_owner.Came(client, process); },
        [this](link::ClientId client) { m_owner.Gone(client); });
    AddOperations(*m_server, m_owner);
    m_server->On<link::GetServiceState>([this](link::ClientId, const auto&, auto& out) {
        std::get<0>(out) = State();
        return STATUS_SUCCESS;
    });
    m_server->On<link::StopService>([this](link::ClientId, const auto&, auto&) {
        m_options.stop();
        return STATUS_SUCCESS;
    });
    if (!m_server->Listen(reason)) {
        return false;
    }
    // What a service that was killed has left behind.
    tunnel::AreaWriter::ReclaimStaleAreas();
    m_hub = std::make_unique<link::HubLink>(
        link::HubLink::RegistrationOf(link::kServiceName, QString::fromStdString(socket)),
        m_options.startHub);
    return true;
}

bool DeviceService::Stop(std::chrono::milliseconds nominalLimit) {
    m_hub.reset();
    // Closing the device ends the waits of calls, which the server then waits for.
    return m_owner.Close(nominalLimit) && (!m_server || m_server->Close(nominalLimit));
}

std::unique_ptr<Device> DeviceService::Open(const std::string& type, std::int64_t id,
                                            link::ClientId client, RETSTATUS& status) {
    const Device::Outputs outputs{[this, client](const SetNotice& notice) {
                                      return m_server->Send(client, SignalOf(notice));
                                  },
                                  [this, client](unsigned char statusA, unsigned char statusB) {
                                      m_server->Send(client, SignalOf(statusA, statusB));
                                  }};
    std::string reason;
    auto device = Device::Connect(type, static_cast<std::uint64_t>(id), outputs, status, reason);
    if (!device) {
        KORVEX_LOG_ERROR(kServiceLog) << "cannot connect the device: " << reason;
    }
    return device;
}

link::ServiceState DeviceService::State() {
    using std::chrono::milliseconds;
    link::ServiceState state;
    state.version = QString::fromStdString(m_options.version);
    state.process = os::CurrentProcess();
    state.uptimeMs =
        std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - m_start)
            .count();
    state.virtualHead = QString::fromStdString(m_options.virtualHead);
    if (const auto owner = m_owner.CurrentOwner()) {
        state.clientProcess = owner->process;
        state.deviceType = QString::fromStdString(owner->type);
        state.deviceId = owner->id;
    }
    const DeviceOwner::Use device = m_owner.AnyDevice();
    ScanStatistics statistics;
    if (device && GetScanStatistics(device->Handle(), statistics) == STATUS_SUCCESS) {
        const SetCounts counts = device->Counts();
        state.setsPerSecond = counts.perSecond;
        for (const notice::Figure& figure : notice::kDirectModeFigures) {
            if (figure.loss) {
                state.losses.emplace_back(figure.name, statistics.*figure.member);
            }
        }
        state.losses.emplace_back("setsNotWritten", counts.notWritten);
        state.losses.emplace_back("noticesNotSent", counts.noticesNotSent);
    }
    return state;
}

}  // namespace Korvex3Sync::device_service
