#include "device_service/ServiceSession.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>

#include <glog/logging.h>

#include <QCoreApplication>
#include <set>
#include <system_error>

#include "platform/os/SharedFile.h"
#include "platform/tunnel/AreaName.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// Hands the log records to those that look for some. It is added to glog before there are other
/// threads, because glog's own lock is unknown to the thread sanitizer.
class LogReader : public google::LogSink {
public:
    static LogReader& OfThisProcess() {
        static LogReader reader;
        return reader;
    }
    void Add(LoggedText& text) {
        const std::lock_guard lock(m_mutex);
        m_texts.insert(&text);
    }
    void Remove(LoggedText& text) {
        const std::lock_guard lock(m_mutex);
        m_texts.erase(&text);
    }
    std::vector<std::string> RecordsOf(const LoggedText& text) {
        const std::lock_guard lock(m_mutex);
        return text.m_records;
    }

    using google::LogSink::send;
    void send(google::LogSeverity, const char*, const char*, int, const google::LogMessageTime&,
              const char* message, std::size_t length) override {
        const std::string record(message, length);
        const std::lock_guard lock(m_mutex);
        for (LoggedText* const text : m_texts) {
            if (record.find(text->m_text) != std::string::npos) {
                text->m_records.push_back(record);
            }
        }
    }

private:
    std::mutex m_mutex;
    std::set<LoggedText*> m_texts;
};

namespace {

/// Qt needs one for threads that wait for events.
class Application : public testing::Environment {
public:
    void SetUp() override {
        m_application.emplace(m_count, m_arguments);
        google::AddLogSink(&LogReader::OfThisProcess());
    }
    void TearDown() override {
        google::RemoveLogSink(&LogReader::OfThisProcess());
        m_application.reset();
    }

private:
    int m_count = 1;
    char m_name[21] = "device_service_tests";
    char* m_arguments[2] = {m_name, nullptr};
    std::optional<QCoreApplication> m_application;
};

[[maybe_unused]] const auto* const kApplication =
    testing::AddGlobalTestEnvironment(new Application);

}  // namespace

Notice::Notice(const QList<QVariant>& list)
    : kind(list.value(2).toString()),
      segments(list.value(3).toStringList()),
      factor(list.value(4).toInt()),
      number(list.value(5).toULongLong()),
      notWritten(list.value(6).toULongLong()),
      noticesNotSent(list.value(7).toULongLong()),
      statistics(list.value(8).toList()),
      moreFollow(list.value(9).toBool()),
      device(list.value(10).toLongLong()) {
    EXPECT_EQ(list.size(), 11);
}

ServiceClient::ServiceClient() : ServiceClient([](const Notice&) {}) {}

ServiceClient::ServiceClient(std::function<void(const Notice&)> onNotice)
    : m_onNotice(std::move(onNotice)), m_link(std::make_unique<SyncInterface>()) {
    // Without a receiver, a slot runs on the thread that emits the signal.
    QObject::connect(
        m_link.get(), &SyncInterface::sendCallback,
        [this](const QString&, const QString&, const QList<QVariant>& list, const QString&) {
            const Notice notice(list);
            {
                const std::lock_guard lock(m_mutex);
                m_notices.push_back(notice);
            }
            m_onNotice(notice);
        });
    QObject::connect(
        m_link.get(), &SyncInterface::sendMessage,
        [this](const QString&, const QString&, const QList<QVariant>& list, const QString&) {
            const std::lock_guard lock(m_mutex);
            m_statuses.push_back({list, std::chrono::steady_clock::now()});
        });
    int count = 0;
    EXPECT_TRUE(support::WaitUntil(
        [&] { return m_link->getCameraCount("KV00", count) == STATUS_SUCCESS; }));
}

std::vector<Notice> ServiceClient::Notices() const {
    const std::lock_guard lock(m_mutex);
    return m_notices;
}

std::vector<StatusMessage> ServiceClient::Statuses() const {
    const std::lock_guard lock(m_mutex);
    return m_statuses;
}

bool ServiceClient::WaitForNotices(std::size_t count) const {
    return support::WaitUntil([&] {
        const std::lock_guard lock(m_mutex);
        return m_notices.size() >= count;
    });
}

bool ServiceClient::WaitForStatuses(std::size_t count) const {
    return support::WaitUntil([&] {
        const std::lock_guard lock(m_mutex);
        return m_statuses.size() >= count;
    });
}

LoggedText::LoggedText(std::string text) : m_text(std::move(text)) {
    LogReader::OfThisProcess().Add(*this);
}

LoggedText::~LoggedText() {
    LogReader::OfThisProcess().Remove(*this);
}

std::vector<std::string> LoggedText::Records() const {
    return LogReader::OfThisProcess().RecordsOf(*this);
}

ServiceSession::ServiceSession() : m_hub("1", [] {}) {
    std::string reason;
    EXPECT_TRUE(m_hub.Listen(reason)) << reason;
    StartService();
}

ServiceSession::~ServiceSession() {
    m_service.reset();
    EXPECT_EQ(SharedFiles(), std::vector<std::string>{});
}

virtual_head::HeadDescription ServiceSession::Head() {
    virtual_head::HeadDescription description;
    description.cameraBuffers = 4096;
    description.scene.poses = 2;
    return description;
}

void ServiceSession::Request(const virtual_head::HeadDescription& description) {
    m_head.reset();
    m_head.emplace(description);
    // The first start of a camera draws the scene, which may take longer than a call under a
    // sanitizer.
    { const DirectDevice drawing; }
    TheHead().GetJournal().Clear();
}

DirectDevice::DirectDevice() {
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    int count = 0;
    GetCamerasInformation("KV00", m_serials, widths, heights, colors, count);
    EXPECT_EQ(ConnectDevice("KV00", "", m_serials, widths, heights, m_handle), STATUS_SUCCESS);
}

DirectDevice::~DirectDevice() {
    DisConnectDevice(m_handle);
    for (const char* serial : m_serials) {
        delete[] serial;
    }
}

void ServiceSession::StartService() {
    m_service =
        std::make_unique<device_service::DeviceService>(device_service::DeviceService::Options{
            "1.2.3", "default", [] {}, [this] { ++m_stopRequests; }});
    std::string reason;
    ASSERT_TRUE(m_service->Start(reason)) << reason;
}

std::optional<link::ServiceState> ServiceSession::State() {
    link::Client client;
    link::GetServiceState::Out state;
    if (client.Call<link::GetServiceState>({}, state) != STATUS_SUCCESS) {
        return std::nullopt;
    }
    return std::get<0>(state);
}

bool ServiceSession::WaitUntilFree() {
    return support::WaitUntil([] {
        const auto state = State();
        return state && state->deviceId == 0 && SharedFiles().empty();
    });
}

std::vector<std::string> SharedFiles() {
    std::vector<std::string> names;
    for (const char* area : {"ZrSyncService_SharedMemory", link::kSnapshotArea}) {
        std::string reason;
        const std::string name = tunnel::SharedNameOf(area, reason);
        std::error_code error;
        if (os::SharedFile::Open(name, error)) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace Korvex3Sync::tests
