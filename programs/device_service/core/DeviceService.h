#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "device_service/core/DeviceOwner.h"
#include "platform/link/Server.h"
#include "platform/link/hub/HubLink.h"

namespace Korvex3Sync::device_service {

/// The device service: direct mode for clients in other processes. It listens on the socket of this
/// user and keeps itself registered at the hub. It needs a QCoreApplication, but not its event
/// loop. One for each user at a time, which the caller ensures.
class DeviceService {
public:
    struct Options {
        std::string version;
        /// The simulated head that the environment requests; empty if it requests none.
        std::string virtualHead;
        /// Called on another thread when no hub runs; must return.
        std::function<void()> startHub;
        /// Called on another thread when a client asks the service to end; must not wait for Stop.
        std::function<void()> stop;
    };

    explicit DeviceService(Options options);
    /// Stops, without a limit.
    ~DeviceService();
    DeviceService(const DeviceService&) = delete;
    DeviceService& operator=(const DeviceService&) = delete;

    /// False, with a reason, if the system does not give what is needed. Call it once.
    bool Start(std::string& reason);
    /// Closes the device and all connections. False if something is still running at the nominal
    /// limit; then only the destructor may follow.
    bool Stop(std::chrono::milliseconds nominalLimit);

private:
    std::unique_ptr<Device> Open(const std::string& type, std::int64_t id, link::ClientId client,
                                 RETSTATUS& status);
    link::ServiceState State();

    const Options m_options;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    DeviceOwner m_owner;
    std::unique_ptr<link::Server> m_server;  // its handlers use the owner
    std::unique_ptr<link::HubLink> m_hub;
};

}  // namespace Korvex3Sync::device_service
