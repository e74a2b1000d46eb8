#include "service/ServiceClient.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <fstream>

#include "platform/os/Process.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;
using recorder::Recorder;

std::mutex g_linesMutex;
// Never destroyed: a thread of Qt may have written a line just before the process ends.
std::vector<std::string>& g_lines = *new std::vector<std::string>;

void TakeLine(QtMsgType type, const QMessageLogContext&, const QString& text) {
    const char* const kind = type == QtDebugMsg      ? "debug "
                             : type == QtCriticalMsg ? "critical "
                                                     : "warning ";
    std::lock_guard lock(g_linesMutex);
    g_lines.push_back(kind + text.toStdString());
}

fs::path JournalFile() {
    const fs::path folder = QCoreApplication::applicationDirPath().toStdString();
    return (folder / "journal").make_preferred();
}

}  // namespace

DebugLines::DebugLines() : m_previous(qInstallMessageHandler(TakeLine)) {
    std::lock_guard lock(g_linesMutex);
    g_lines.clear();
}

DebugLines::~DebugLines() {
    qInstallMessageHandler(m_previous);
}

std::vector<std::string> DebugLines::Lines() const {
    std::lock_guard lock(g_linesMutex);
    return g_lines;
}

bool DebugLines::Has(const std::string& line) const {
    const std::vector<std::string> lines = Lines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

ServiceClient::ServiceClient() {
    Recorder::Get().Reset();
    recorder::ResetService();
    Recorder::Get().SetValue("count", 2);
    Recorder::Get().SetValue("id", 77);
    for (const char* name : {"hub.exe", "ZrSyncService.exe"}) {
        // One of the test before, which has only just started, would write into the journal.
        os::EndProcesses(name);
        WriteProgram(name);
    }
    fs::remove(JournalFile());
    fs::remove_all(Folder() / "res");
    // The host's current directory is not the application directory.
    const fs::path current = Folder() / "current";
    fs::create_directory(current);
    for (const char* name :
         {"restart_VID0219_PID0813_REV0221.bat", "restart_VID05E3_PID0620_REV2307.bat"}) {
        WriteScript(current / name, JournalFile());
    }
    fs::current_path(current);
}

ServiceClient::~ServiceClient() {
    m_client.reset();
    fs::current_path(m_before);
}

fs::path ServiceClient::Folder() {
    return JournalFile().parent_path();
}

void ServiceClient::WriteConfiguration(const std::string& text) {
    fs::create_directory(Folder() / "res");
    std::ofstream(Folder() / "res" / "DeviceServiceConfig.ini") << text;
}

void ServiceClient::Configure(const std::map<std::string, std::string>& keys) {
    std::string text = "[Reconnect]\n";
    for (const auto& [key, value] : keys) {
        text += key + "=" + value + "\n";
    }
    WriteConfiguration(text);
}

void ServiceClient::WriteProgram(const std::string& name, const StandIn& does) {
    WriteStandIn(Folder() / name, JournalFile(), does);
}

bool ServiceClient::Start() {
    MakeClient();
    return m_client->Init();
}

void ServiceClient::Connect() {
    ASSERT_TRUE(Start());
    ASSERT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_SUCCESS);
    ASSERT_EQ(m_handle, reinterpret_cast<void*>(77));
}

void ServiceClient::HandOver(std::function<void()> work) {
    struct Handed {
        std::mutex mutex;
        std::function<void()> work;
    };
    const auto handed = std::make_shared<Handed>();
    {
        std::lock_guard lock(handed->mutex);
        handed->work = std::move(work);
    }
    QMetaObject::invokeMethod(
        m_client.get(),
        [handed] {
            std::lock_guard lock(handed->mutex);
            handed->work();
        },
        Qt::QueuedConnection);
}

void ServiceClient::OnWorker(const std::function<void()>& work) {
    os::Event done;
    HandOver([&] {
        work();
        done.Set();
    });
    done.Wait();
}

void ServiceClient::RunSlot(const char* slot) {
    OnWorker([&] { EXPECT_TRUE(QMetaObject::invokeMethod(m_client.get(), slot)); });
}

void ServiceClient::RunSlot(const char* slot, bool argument) {
    OnWorker([&] {
        EXPECT_TRUE(QMetaObject::invokeMethod(m_client.get(), slot, Q_ARG(bool, argument)));
    });
}

void ServiceClient::Settle() {
    for (int i = 0; i < 2; ++i) {
        OnWorker([] {});
    }
}

ServiceClient::TimerState ServiceClient::Timer(TimerIndex index) {
    TimerState state;
    OnWorker([&] {
        const QTimer& timer =
            *m_client->findChildren<QTimer*>("", Qt::FindDirectChildrenOnly)[index];
        state = {timer.isActive(), timer.interval(), timer.remainingTime()};
    });
    return state;
}

std::vector<std::string> ServiceClient::ReconnectCalls() {
    const std::size_t before = Recorder::Get().CallsInOrder().size();
    RunSlot("ReConnect");
    const std::vector<std::string> calls = Recorder::Get().CallsInOrder();
    return {calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()};
}

void ServiceClient::SendMessage(const QList<QVariant>& list) {
    HandOver([] {});
    Q_EMIT recorder::TheSyncInterface()->sendMessage("plugin", "message", list, "1");
}

void ServiceClient::SendStatus(const QString& text, int value) {
    SendMessage({"first", QVariant(), text, value});
}

void ServiceClient::SendCallback(const QList<QVariant>& list) {
    HandOver([] {});
    Q_EMIT recorder::TheSyncInterface()->sendCallback("plugin", "callback", list, "1");
}

void ServiceClient::SendNotice(const QString& kind, const QStringList& segments, int n) {
    SendCallback({QVariant(), QVariant(), kind, segments, n});
}

std::vector<std::string> ServiceClient::Journal() {
    std::ifstream file(JournalFile());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::size_t ServiceClient::Journaled(const std::string& beginning) {
    const std::vector<std::string> lines = Journal();
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(),
        [&beginning](const std::string& line) { return line.starts_with(beginning); }));
}

}  // namespace Korvex3Sync::tests
