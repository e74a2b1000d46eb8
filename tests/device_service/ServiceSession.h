#pragma once

#include <SyncInterface.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "device_service/core/DeviceService.h"
#include "link/Folders.h"
#include "platform/link/Client.h"
#include "platform/link/hub/HubServer.h"
#include "support/RequestedHead.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::tests {

/// A notice of an image set, as a client gets it.
struct Notice {
    explicit Notice(const QList<QVariant>& list);

    QString kind;
    QStringList segments;
    int factor = 0;
    std::uint64_t number = 0;
    std::uint64_t notWritten = 0;
    std::uint64_t noticesNotSent = 0;
    QList<QVariant> statistics;
    bool moreFollow = false;
    qint64 device = 0;
};

struct StatusMessage {
    QList<QVariant> list;
    std::chrono::steady_clock::time_point time;
};

/// A client of the service, which keeps what it is sent.
class ServiceClient {
public:
    /// Waits until it is connected to the service.
    ServiceClient();
    /// With this, called on the client's own thread for each notice.
    explicit ServiceClient(std::function<void(const Notice&)> onNotice);
    ~ServiceClient() { Vanish(); }
    ServiceClient(const ServiceClient&) = delete;
    ServiceClient& operator=(const ServiceClient&) = delete;

    SyncInterface& operator*() { return *m_link; }
    SyncInterface* operator->() { return m_link.get(); }
    qint64 Id() const { return m_id; }
    RETSTATUS Connect(const QString& type = "KV00") { return m_link->connectDevice(type, m_id); }

    std::vector<Notice> Notices() const;
    std::vector<StatusMessage> Statuses() const;
    bool WaitForNotices(std::size_t count) const;
    bool WaitForStatuses(std::size_t count) const;

    /// Ends the link, as the end of the process does. Calls that are inside fail.
    void Vanish() { m_link.reset(); }

private:
    const std::function<void(const Notice&)> m_onNotice;
    mutable std::mutex m_mutex;
    std::vector<Notice> m_notices;
    std::vector<StatusMessage> m_statuses;
    qint64 m_id = 0;
    std::unique_ptr<SyncInterface> m_link;
};

/// The log records of this process that contain a text, while it exists.
class LoggedText {
public:
    explicit LoggedText(std::string text);
    ~LoggedText();
    LoggedText(const LoggedText&) = delete;
    LoggedText& operator=(const LoggedText&) = delete;

    std::vector<std::string> Records() const;

private:
    friend class LogReader;
    const std::string m_text;
    std::vector<std::string> m_records;
};

/// The head, connected in direct mode.
class DirectDevice {
public:
    DirectDevice();
    ~DirectDevice();
    DirectDevice(const DirectDevice&) = delete;
    DirectDevice& operator=(const DirectDevice&) = delete;

    void* const& Handle() const { return m_handle; }

private:
    std::vector<char*> m_serials;
    void* m_handle = nullptr;
};

/// Hub and service in this process, with folders of their own, and a virtual head.
class ServiceSession : public testing::Test {
protected:
    ServiceSession();
    ~ServiceSession() override;

    /// A head of the size that service mode has, whose scene is drawn quickly.
    static virtual_head::HeadDescription Head();
    void Request(const virtual_head::HeadDescription& description = Head());
    void StopService() { m_service.reset(); }
    void StartService();

    virtual_head::VirtualHead& TheHead() { return **m_head; }
    device_service::DeviceService& Service() { return *m_service; }
    /// What the service says about itself; nothing if it does not answer.
    static std::optional<link::ServiceState> State();
    /// Waits until no client has the device and it is closed.
    static bool WaitUntilFree();
    int StopRequests() const { return m_stopRequests; }

    const Folders m_folders;

private:
    link::HubServer m_hub;
    std::optional<RequestedHead> m_head;
    std::atomic<int> m_stopRequests{0};
    std::unique_ptr<device_service::DeviceService> m_service;
};

/// The service's areas that exist in the present runtime folder.
std::vector<std::string> SharedFiles();

}  // namespace Korvex3Sync::tests
