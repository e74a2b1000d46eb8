#pragma once

#include <gtest/gtest.h>

#include <QtGlobal>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/os/TimeScale.h"
#include "recorder/RecordedService.h"
#include "recorder/Recorder.h"
#include "service/StandIn.h"
#include "service/zr3DHandiSyncQT.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// Collects the lines of Qt's debug channel of all threads. One at a time.
class DebugLines {
public:
    DebugLines();
    ~DebugLines();
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    /// "debug text", "critical text" or "warning text".
    std::vector<std::string> Lines() const;
    bool Has(const std::string& line) const;

private:
    const QtMessageHandler m_previous;
};

/// The client over a recording service. Small programs and scripts, which write into a journal,
/// stand in for the hub, the service and the scripts.
class ServiceClient : public testing::Test {
protected:
    ServiceClient();
    ~ServiceClient() override;

    static std::filesystem::path Folder();
    /// Keys of the group "Reconnect".
    static void Configure(const std::map<std::string, std::string>& keys);
    static void WriteConfiguration(const std::string& text);
    /// Makes a program of the application directory.
    static void WriteProgram(const std::string& name, const StandIn& does = {});

    void MakeClient() { m_client = std::make_unique<zr3DHandiSyncQT>(); }
    /// Makes the client and starts it.
    bool Start();
    /// The same, and connects the device with the id 77.
    void Connect();
    /// Runs on the worker thread, in its turn. The sanitizer sees that what this thread did before
    /// comes before it.
    void HandOver(std::function<void()> work);
    /// The same, and returns afterwards.
    void OnWorker(const std::function<void()>& work);
    /// The client's slot, run on its thread; returns afterwards.
    void RunSlot(const char* slot);
    void RunSlot(const char* slot, bool argument);
    /// Returns when the worker thread has handled what was queued before, and what that queued.
    void Settle();
    /// Reconnects once, and gives the calls of the service meanwhile.
    std::vector<std::string> ReconnectCalls();

    /// A timer of the client: 0 the status watchdog, 1 the scan watchdog, 2 the next reconnect.
    struct TimerState {
        bool active = false;
        int interval = 0;
        int remaining = 0;
    };
    enum TimerIndex : int { kStatusTimer, kScanTimer, kRetryTimer };
    TimerState Timer(TimerIndex index);

    /// As the service does.
    void SendStatus(const QString& text, int value);
    void SendMessage(const QList<QVariant>& list);
    void SendNotice(const QString& kind, const QStringList& segments, int n);
    void SendCallback(const QList<QVariant>& list);

    /// What the scripts wrote.
    static std::vector<std::string> Journal();
    /// How many lines of the journal begin like this.
    static std::size_t Journaled(const std::string& beginning);

    os::ScopedTimeScale m_scale{0.01};
    DebugLines m_debug;
    std::unique_ptr<zr3DHandiSyncQT> m_client;
    void* m_handle = nullptr;
    const std::filesystem::path m_before = std::filesystem::current_path();
};

}  // namespace Korvex3Sync::tests
