#include "survival/HostWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <set>

#include "support/ChildProcess.h"
#include "support/WaitUntil.h"
#include "survival/Processes.h"

namespace Korvex3Sync::tests::survival {

namespace {

namespace fs = std::filesystem;

/// What a busy machine or a sanitizer may add to a call.
constexpr double kBusyMs = 5000;

void WriteScriptFile(const fs::path& file, const std::string& text) {
    std::ofstream(file) << "#!/bin/sh\n" << text << "\n";
    fs::permissions(file, fs::perms::owner_all);
}

}  // namespace

std::vector<std::string> LinesOf(const fs::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

HostWorld::HostWorld(std::map<std::string, int> configuration) {
    fs::create_directories(Directory() / "res");
    fs::copy_file(KORVEX_HOST, Directory() / "host");
    fs::copy_file(KORVEX_JOURNALING_SERVICE, Directory() / "ZrSyncService.exe");
    fs::copy_file(fs::path(KORVEX_PROGRAMS) / "hub.exe", Directory() / "hub.exe");
    for (const char* script :
         {"restart_VID0219_PID0813_REV0221.bat", "restart_VID05E3_PID0620_REV2307.bat"}) {
        WriteScriptFile(Directory() / script, "echo run >> scripts");
    }
    // In nominal time.
    configuration.insert(
        {{"RestartProcessWaitTime", 10}, {"ReconnectPeriod", 10}, {"StatusTimeOut", 20}});
    std::ofstream file(Directory() / "res" / "DeviceServiceConfig.ini");
    file << "[Reconnect]\n";
    for (const auto& [key, value] : configuration) {
        file << key << '=' << value << '\n';
    }
}

std::unique_ptr<ApplicationProcess> HostWorld::Host(const std::string& how) {
    std::vector<std::string> command{(Directory() / "host").string(), std::to_string(kHostScale),
                                     Directory().string()};
    if (!how.empty()) {
        command.push_back(how);
    }
    auto environment = Environment();
    // The library never sets up its log, so it goes to standard error; warnings explain a failure.
    environment.emplace_back("GLOG_minloglevel", "1");
    environment.insert(environment.end(), m_environment.begin(), m_environment.end());
    auto host = std::make_unique<ApplicationProcess>(command, environment);
    EXPECT_EQ(StatusOf(*host, "switch 1"), STATUS_SUCCESS);
    return host;
}

void HostWorld::StopService() const {
    const pid_t service = RunningService();
    ASSERT_GT(service, 0);
    ASSERT_EQ(::kill(service, SIGSTOP), 0);
    EXPECT_TRUE(support::WaitUntil([service] { return ProcessIsStopped(service); }));
}

void HostWorld::StartServiceByHand() const {
    StartProcess({(Directory() / "ZrSyncService.exe").string()}, Environment());
    EXPECT_TRUE(support::WaitUntil([this] { return RunningService() > 0; }));
}

std::vector<std::string> HostWorld::JournalUntil(pid_t service, const std::string& last) const {
    const fs::path file = Folders().Path() / "s" / ("journal." + std::to_string(service));
    std::vector<std::string> lines;
    const bool found = support::WaitUntil([&] {
        lines = LinesOf(file);
        const auto end = std::find_if(lines.begin(), lines.end(), [&last](const std::string& line) {
            return line.starts_with(last);
        });
        if (end == lines.end()) {
            return false;
        }
        lines.erase(end + 1, lines.end());
        return true;
    });
    EXPECT_TRUE(found) << last << " is not in " << file;
    return found ? lines : std::vector<std::string>{};
}

std::size_t HostWorld::ScriptRuns() const {
    return LinesOf(Directory() / "scripts").size();
}

void HostWorld::End(ApplicationProcess& host) {
    host.End();
    // The hub after the service, which would start another one. A service that the host started a
    // moment ago holds no lock yet.
    std::set<pid_t> told;
    support::WaitUntil([&] {
        const pid_t service = RunningService();
        const pid_t next = service > 0 ? service : Hub();
        if (next > 0 && told.insert(next).second) {
            ::kill(next, SIGTERM);
        }
        return Folders().Processes().empty();
    });
    ExpectNothingLeft();
}

std::vector<Event> Do(ApplicationProcess& host, const std::string& command) {
    const Moment told = Now();
    host.Tell(command);
    const auto done = host.WaitFor("done", told);
    EXPECT_TRUE(done) << command;
    std::vector<Event> calls;
    if (done) {
        for (const Event& event : host.Events()) {
            if (event.kind == "call" && event.time > told && event.time <= done->time) {
                calls.push_back(event);
            }
        }
    }
    return calls;
}

int StatusOf(ApplicationProcess& host, const std::string& command) {
    const std::vector<Event> calls = Do(host, command);
    EXPECT_FALSE(calls.empty()) << command;
    return calls.empty() ? -1 : calls.back().number;
}

void StartScan(ApplicationProcess& host, int settings) {
    ASSERT_EQ(StatusOf(host, "connect"), STATUS_SUCCESS);
    ASSERT_EQ(StatusOf(host, "status 1"), STATUS_SUCCESS);
    ASSERT_EQ(StatusOf(host, "sets 1"), STATUS_SUCCESS);
    for (const Event& call : Do(host, "settings " + std::to_string(settings))) {
        EXPECT_EQ(call.number, STATUS_SUCCESS) << call.word;
    }
    const Moment started = Now();
    ASSERT_EQ(StatusOf(host, "trigger 4 1"), STATUS_SUCCESS);
    ASSERT_TRUE(SteadySetsAfter(host, started));
}

std::vector<std::string> ExpectedJournal(const HostSettings& s) {
    constexpr int kSelectOrder = 256;
    constexpr int kGainStep = 1024;
    constexpr int kTenths = 10;
    const auto text = [](std::initializer_list<int> numbers) {
        std::string joined;
        for (const int number : numbers) {
            joined += (joined.empty() ? "" : ", ") + std::to_string(number);
        }
        return "(" + joined + ")";
    };
    std::vector<std::string> journal;
    for (int order = 0; order < 2; ++order) {
        journal.push_back("SetCameraIntParam" +
                          text({5, order * kSelectOrder + s.gains[order] * kGainStep +
                                       static_cast<int>(s.exposures[order] * kTenths)}) +
                          " = true");
    }
    // The library crosses 2 and 3 over.
    const int distance = s.distance == 2 ? 3 : s.distance == 3 ? 2 : static_cast<int>(s.distance);
    const std::vector<std::string> board{
        "zr3DOpenOrCloseStrobeFlicker" + text({s.route, s.state}),
        "zr3DSetLaserEnable" + text({s.laser, s.laserMode}),
        "zr3DSetIRLaserEnable" + text({s.infrared}),
        "zr3DSetVideoTriggerPeriod" + text({s.period}),
        "zr3DSetProjectorBrightness" + text({s.brightness}),
        "zr3DProject" + text({s.project}),
        "zr3DSetLedDutioRatio" + text({41, s.texture, s.ratio, s.ratioWithTexture}),
        "zr3DSetDutioRatio" + text({49, s.laserRatio}),
        "zr3DSetDutioRatio" + text({51, s.projectRatio}),
        "zr3DSetDutioRatio" + text({53, s.infraredRatio}),
        "zr3DSetDistanceIndicateState" + text({distance}),
        "zr3DSetVideoTrigleMode(6)",
    };
    for (const std::string& call : board) {
        journal.push_back(call + " = true");
    }
    return journal;
}

void ExpectCalls(const ApplicationProcess& host, const std::vector<int>& statuses,
                 double milliseconds) {
    for (const Event& event : host.Events()) {
        EXPECT_NE(event.kind, "bad") << event.word;
        if (event.kind == "call") {
            EXPECT_THAT(statuses, ::testing::Contains(event.number)) << event.word;
            EXPECT_LT(event.milliseconds, milliseconds + kBusyMs) << event.word;
        }
    }
}

}  // namespace Korvex3Sync::tests::survival
