// Scans in service mode through the exported functions while a second thread makes random calls and
// a third kills and stops services and hubs. Whatever happens: nothing crashes, nothing hangs,
// nothing grows, and in calm the images are back by themselves.

#include <signal.h>
#include <sys/stat.h>

#include <glog/logging.h>

#include <Korvex3Sync/Korvex3Sync.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "interface/EveryExport.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/TimeScale.h"
#include "soak/Dice.h"
#include "soak/Resources.h"
#include "soak/Soak.h"
#include "soak/Watchdog.h"
#include "support/OwnFolders.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests::soak {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// A start of the service takes 1.3 s instead of 13 s. Hub and service have real time.
constexpr double kServiceScale = 0.1;
/// A snapshot that waits in the service ends at its limit.
constexpr seconds kServiceHangLimit{120};
constexpr unsigned long kSteadySets = 20;

std::atomic<unsigned long> g_serviceSets{0};
int g_serviceContext = 0;

void OnServiceSet(const void* const&, std::vector<unsigned char*>& images, const int& width,
                  const int& height, std::vector<int>&) {
    // Both ends are read, so that the address sanitizer finds an image that is not there.
    static std::atomic<unsigned> sum{0};
    for (const unsigned char* image : images) {
        sum += image[0] + image[width * height - 1];
    }
    ++g_serviceSets;
}

class ServiceSoak {
public:
    explicit ServiceSoak(const Options& options)
        : m_end(steady_clock::now() + seconds(options.seconds)),
          m_seed(options.seed),
          m_folder(QCoreApplication::applicationDirPath().toStdString()) {}

    bool Run() {
        Prepare();
        m_watchdog.Of(Watchdog::Scanner).Doing("switches service mode on");
        SwitchOnDeviceService(true);
        std::thread caller([this] { Call(); });
        std::thread faults([this] { Harm(); });
        for (std::uint64_t step = 0; m_wrong.empty() && steady_clock::now() < m_end; ++step) {
            OneScan(step);
        }
        m_stop = true;
        caller.join();
        faults.join();
        Print();
        return m_wrong.empty();
    }

private:
    void Doing(const char* what) { m_watchdog.Of(Watchdog::Scanner).Doing(what); }
    void Wrong(const std::string& what) { m_wrong.push_back(what); }
    fs::path Runtime() const { return m_folder / "r" / "korvex3sync"; }

    /// The application directory, and the environment of hub and service.
    void Prepare() {
        for (const char* program : {"hub.exe", "ZrSyncService.exe"}) {
            fs::copy_file(fs::path(KORVEX_PROGRAMS) / program, m_folder / program);
        }
        fs::create_directory(m_folder / "res");
        std::ofstream(m_folder / "res" / "DeviceServiceConfig.ini")
            << "[Reconnect]\nRestartProcessWaitTime=10\nReconnectPeriod=5\nStatusTimeOut=20\n";
        std::ofstream(m_folder / "head.toml") << "[scene]\nposes = 1\n";
        fs::create_directory(m_folder / "r");
        fs::permissions(m_folder / "r", fs::perms::owner_all);
        ::setenv("XDG_RUNTIME_DIR", (m_folder / "r").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (m_folder / "s").c_str(), 1);
        ::setenv("KORVEX_VIRTUAL_HEAD", (m_folder / "head.toml").c_str(), 1);
    }

    /// Random calls, except while the scanner wants calm.
    void Call() {
        const std::vector<Export>& exports = EveryExport();
        for (std::uint64_t step = 0; !m_stop; ++step) {
            Dice dice(m_seed, Thrower::Caller, step);
            const Export& one = dice.OneOf(exports);
            const std::lock_guard lock(m_calling);
            m_watchdog.Of(Watchdog::Caller).Doing(one.name);
            // A snapshot of direct mode would wait for another head.
            if (one.kind != Kind::AlwaysDirect) {
                one.call(m_handle);
                ++m_calls;
            }
            std::this_thread::sleep_for(milliseconds(dice.From(1, 20)));
        }
    }

    pid_t Holder(const char* lock) const {
        return static_cast<pid_t>(os::InstanceLockHolder(Runtime() / lock));
    }
    void Signal(const char* lock, int signal) {
        if (const pid_t process = Holder(lock); process > 0) {
            ::kill(process, signal);
        }
    }

    void Harm() {
        for (std::uint64_t step = 0; !m_stop; ++step) {
            Dice dice(m_seed, Thrower::Faults, step);
            {
                m_watchdog.Of(Watchdog::FaultThread).Doing("harms");
                const std::lock_guard lock(m_harming);
                static const std::vector<std::string> kinds{"service killed", "service stopped",
                                                            "hub killed", "both killed"};
                const std::string& kind = dice.OneOf(kinds);
                if (kind == "hub killed" || kind == "both killed") {
                    Signal("hub.lock", SIGKILL);
                }
                if (kind != "hub killed") {
                    Signal("service.lock", kind == "service stopped" ? SIGSTOP : SIGKILL);
                }
                ++m_harms[kind];
            }
            const auto until = steady_clock::now() + milliseconds(dice.From(500, 5000));
            while (!m_stop && steady_clock::now() < until) {
                std::this_thread::sleep_for(milliseconds(10));
            }
        }
    }

    void OneScan(std::uint64_t step) {
        Dice dice(m_seed, Thrower::Scanner, step);
        const auto until = steady_clock::now() + milliseconds(dice.From(500, 4000));
        while (steady_clock::now() < until) {
            if (!StartScan()) {
                Connect();
            }
            std::this_thread::sleep_for(milliseconds(dice.From(20, 200)));
        }
        InCalm();
    }

    void Connect() {
        Doing("connects");
        void* handle = nullptr;
        if (ConnectDevice("KV00", "", {}, {}, {}, handle) == STATUS_SUCCESS) {
            m_handle = handle;
            ++m_connections;
        }
    }
    bool StartScan() {
        Doing("starts a scan");
        return SetScanCallBackFunction(m_handle, OnServiceSet, &g_serviceContext) ==
                   STATUS_SUCCESS &&
               SetVideoTriggerPeriod(m_handle, 10) == STATUS_SUCCESS &&
               EnableVideoTrigger(m_handle, TRIGGER_LASER_LINES_COLOR, true) == STATUS_SUCCESS;
    }

    /// Nobody else calls or harms: a scan works, within the time of some attempts to reconnect, and
    /// goes on by itself when its service is killed.
    void InCalm() {
        Doing("waits for calm");
        const std::lock_guard calling(m_calling);
        const std::lock_guard harming(m_harming);
        Doing("starts a scan in calm");
        // A stopped service would be found only by missing images.
        Signal("service.lock", SIGCONT);
        const bool scans = support::WaitUntil([this] {
            if (StartScan()) {
                return true;
            }
            // Without images, nothing restarts a service that was killed.
            if (Holder("service.lock") == 0) {
                RestartService();
            }
            Connect();
            return false;
        });
        if (!scans) {
            Wrong("no scan starts in calm");
            return;
        }
        WaitForSets("no sets come in calm");
        if (m_wrong.empty()) {
            Doing("kills the service in calm");
            Signal("service.lock", SIGKILL);
            WaitForSets("no sets come after a reconnection in calm");
        }
        Doing("disconnects");
        EnableVideoTrigger(m_handle, TRIGGER_LASER_LINES_COLOR, false);
        void* handle = m_handle;
        DisConnectDevice(handle);
        Doing("looks at the resources");
        if (const std::string grown = m_resources.Look(); !grown.empty()) {
            Wrong(grown);
        }
        const auto areas = SharedMemoryObjects();
        constexpr std::size_t kMostAreas = 2;
        if (areas.size() > kMostAreas) {
            Wrong(std::to_string(areas.size()) + " areas of shared memory are left");
        }
        ++m_calms;
    }

    /// As a user does with korvexctl service start.
    void RestartService() {
        const std::string command = "'" + (m_folder / "ZrSyncService.exe").string() + "' &";
        if (std::system(command.c_str()) != 0) {
            Wrong("the service cannot be started");
        }
        support::WaitUntil([this] { return Holder("service.lock") > 0; });
    }

    void WaitForSets(const char* otherwise) {
        Doing("waits for sets in calm");
        const unsigned long sets = g_serviceSets;
        if (!support::WaitUntil([sets] { return g_serviceSets >= sets + kSteadySets; })) {
            Wrong(otherwise);
        }
    }

    void Print() const {
        std::fprintf(stderr,
                     "connections %lu, scans in calm %lu, sets %lu, random calls %lu\nharm:",
                     m_connections, m_calms, g_serviceSets.load(), m_calls.load());
        for (const auto& [kind, count] : m_harms) {
            std::fprintf(stderr, " %s %lu,", kind.c_str(), count);
        }
        std::fprintf(
            stderr, "\nbytes in use %zu at first, %zu at last; threads %zu, %zu; files %zu, %zu\n",
            m_resources.First().bytes, m_resources.Last().bytes, m_resources.First().threads,
            m_resources.Last().threads, m_resources.First().files, m_resources.Last().files);
        for (const std::string& wrong : m_wrong) {
            std::fprintf(stderr, "WRONG: %s\n", wrong.c_str());
        }
    }

    const steady_clock::time_point m_end;
    const std::uint64_t m_seed;
    const fs::path m_folder;
    Watchdog m_watchdog{kServiceHangLimit};
    std::mutex m_calling;
    std::mutex m_harming;
    std::atomic<bool> m_stop{false};
    std::atomic<void*> m_handle{this};  // any value: the client uses its own
    ResourceWatch m_resources;
    std::atomic<unsigned long> m_calls{0};
    unsigned long m_connections = 0;
    unsigned long m_calms = 0;
    std::map<std::string, unsigned long> m_harms;
    std::vector<std::string> m_wrong;
};

}  // namespace

int SoakServiceMode(const Options& options) {
    std::fprintf(stderr, "seed %llu\n", static_cast<unsigned long long>(options.seed));
    FLAGS_minloglevel = google::GLOG_FATAL;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const os::ScopedTimeScale scale(kServiceScale);
    return ServiceSoak(options).Run() ? 0 : 1;
}

}  // namespace Korvex3Sync::tests::soak
