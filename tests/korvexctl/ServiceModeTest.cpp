#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>

#include "korvexctl/Korvexctl.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/OwnFolders.h"
#include "support/ProcessNamespace.h"
#include "support/WaitUntil.h"
#include "survival/ApplicationProcess.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr int kUsage = 2;
constexpr int kFailed = 17;
constexpr int kNotInServiceMode = 18;
/// Under a sanitizer, a busy machine is too slow for a scan at the usual rate.
constexpr bool kMayBeTooSlow = KORVEX_SANITIZED;

/// korvexctl with --service, and a hub and a service of its own, which it starts.
class KorvexctlServiceMode : public ::testing::Test {
protected:
    ~KorvexctlServiceMode() override {
        EXPECT_THAT(m_folders.Processes(), SizeIs(::testing::Le(2U))) << "hub and service at most";
    }
    ChildOptions Options() const {
        ChildOptions options;
        options.environment = m_folders.Environment();
        return options;
    }
    ChildResult Run(const std::vector<std::string>& words) const {
        return RunKorvexctl(words, Options());
    }
    /// Runs `korvexctl --virtual --service --json ...`, which succeeds: one document and nothing
    /// else.
    nlohmann::json Document(const std::vector<std::string>& words, const std::string& head) const {
        std::vector<std::string> arguments{head, "--service", "--json"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const ChildResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_EQ(result.error, "");
        return ParseJson(result.output);
    }
    nlohmann::json Document(const std::vector<std::string>& words) const {
        return Document(words, m_head);
    }
    nlohmann::json Service() const {
        return ParseJson(Run({"service", "status", "--json"}).output)["service"];
    }
    /// The command line is refused with this reason, before anything is started.
    void ExpectRefused(const std::vector<std::string>& words, const std::string& reason) const {
        std::vector<std::string> arguments{"--virtual", "--service"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const ChildResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, kNotInServiceMode);
        EXPECT_EQ(result.error, "korvexctl: not available with --service: " + reason + "\n");
        EXPECT_THAT(m_folders.Processes(), IsEmpty());
    }

    const OwnFolders m_folders;
    const std::string m_head = HeadOfFiles();

private:
    /// A head for a busy machine: its images come from files, while those of a scene are drawn when
    /// it is connected and after each change of light, and its cameras have many buffers.
    std::string HeadOfFiles() const {
        constexpr int kWidth = 1280;
        constexpr int kHeight = 1024;
        const fs::path folder = m_folders.Path() / "head";
        fs::create_directory(folder);
        for (const char* name : {"left0.png", "right0.png", "color0.png"}) {
            WriteGrey(folder / name, RandomImage(kWidth, kHeight, 1));
        }
        WriteText(folder / "head.toml", "[camera]\nbuffers = 4096\n\n[replay]\nfolder = \".\"\n");
        return "--virtual=" + (folder / "head.toml").string();
    }
};

TEST_F(KorvexctlServiceMode, ListsWhatDirectModeLists) {
    const nlohmann::json through = Document({"list"}, "--virtual");
    EXPECT_EQ(through, ParseJson(Run({"--virtual", "--json", "list"}).output));
    EXPECT_THAT(through["cameras"], SizeIs(2));
    const nlohmann::json service = Service();
    EXPECT_EQ(service["answers"], true) << "it goes on";
    EXPECT_EQ(service["virtual_head"], "default");
    EXPECT_TRUE(service["client_pid"].is_null());
}

TEST_F(KorvexctlServiceMode, ScansWithTheFiguresOfDirectMode) {
    const fs::path folder = m_folders.Path() / "scan";
    const std::vector<std::string> scan{"scan",   "--sets", "30",    "--period",     "50",
                                        "--keep", "2",      "--out", folder.string()};
    const nlohmann::json through = Document(scan);
    std::vector<std::string> direct{m_head, "--json"};
    direct.insert(direct.end(), scan.begin(), scan.end());
    direct.back() += "-direct";
    const nlohmann::json compared = ParseJson(Run(direct).output);
    const auto keys = [](const nlohmann::json& document) {
        std::vector<std::string> names;
        for (const auto& [name, value] : document.items()) {
            names.push_back(name);
        }
        return names;
    };
    EXPECT_EQ(keys(through), keys(compared));
    EXPECT_EQ(keys(through["losses"]), keys(compared["losses"]));
    EXPECT_EQ(through["sets"]["delivered"], 30);
    EXPECT_EQ(keys(through["sets"]), keys(compared["sets"]));
    for (const auto& [place, count] : through["losses"].items()) {
        EXPECT_TRUE(count.is_number()) << place;
    }
    EXPECT_GT(through["sets_per_second"], 0);
    EXPECT_GT(through["callback_us"]["longest"], 0);
    EXPECT_EQ(through["service_reconnects"]["count"], 0);
    EXPECT_EQ(through["settings"]["values"]["trigger-period"], 50);
    EXPECT_FALSE(through["settings"]["values"].contains("strobe-work-time"));
    EXPECT_EQ(FileNames(folder), FileNames(folder.string() + "-direct"));
}

TEST_F(KorvexctlServiceMode, ContinuesAScanWhoseServiceWasKilledAndCountsTheGap) {
    const fs::path folder = m_folders.Path() / "scan";
    ChildProcess scan(
        KorvexctlCommand({m_head, "--service", "--json", "scan", "--sets", "300", "--period", "20",
                          "--timeout", "60", "--keep", "10", "--out", folder.string()}),
        WithoutHead(Options()));
    // The picture of the first set.
    ASSERT_TRUE(support::WaitUntil([&] {
        std::error_code none;
        fs::directory_iterator file(folder, none);
        return std::any_of(fs::begin(file), fs::end(file), [](const fs::directory_entry& entry) {
            return entry.path().extension() == ".png";
        });
    }));
    const os::OtherProcess service(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"));
    ASSERT_TRUE(service.Kill());
    const ChildResult result = scan.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    const nlohmann::json figures = ParseJson(result.output);
    EXPECT_EQ(figures["sets"]["delivered"], 300);
    EXPECT_EQ(figures["service_reconnects"]["count"], 1);
    const int gap = figures["service_reconnects"]["ms"];
    EXPECT_GT(gap, 5 * 300) << "the watchdog waits 5 s, and time is scaled";
    EXPECT_EQ(figures["losses"]["while_away"], gap / 20);
    EXPECT_EQ(figures["settings"]["values"]["trigger-period"], 20);
    EXPECT_NE(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"), 0);
}

TEST_F(KorvexctlServiceMode, PassesTheSelftest) {
    ChildResult result;
    // A scan fails where a busy machine loses sets, and says so.
    support::WaitUntil([&] {
        result = Run({m_head, "--service", "--json", "selftest", "--write-user-memory"});
        return result.exitCode == 0;
    });
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_TRUE(kMayBeTooSlow || document["failed"] == 0);
    std::map<std::string, std::string> verdicts;
    for (const nlohmann::json& step : document["steps"]) {
        const std::string name = step["name"];
        const std::string finding = step["finding"];
        verdicts[name] = step["verdict"];
        if (verdicts[name] == "FAILED") {
            EXPECT_THAT(name, StartsWith("scan "));
            // The second one where sets of the scan before came late.
            EXPECT_THAT(finding, AnyOf(HasSubstr("lost: "), HasSubstr("keys out of order")))
                << name;
        } else if (verdicts[name] == "not run" && finding != "direct mode only") {
            EXPECT_THAT(name, AnyOf(HasSubstr("exposure."), HasSubstr("gain."),
                                    ::testing::Eq("user memory write")));
        }
    }
    for (const char* step : {"strobe-work-time", "ir-laser-level", "heartbeat", "infrared snapshot",
                             "reset of nothing", "user memory write"}) {
        EXPECT_EQ(verdicts[step], "not run") << step;
    }
    for (const char* step :
         {"firmware", "connect", "snapshot", "reconnect", "status", "projector-brightness"}) {
        EXPECT_EQ(verdicts[step], "passed") << step;
    }
    for (const char* step : {"scan laser-color", "scan after reconnect"}) {
        EXPECT_THAT(verdicts[step], AnyOf("passed", "FAILED")) << step;
    }
}

TEST_F(KorvexctlServiceMode, SetsReadsAndTakesSnapshots) {
    const nlohmann::json set = Document({"set", "projector-brightness", "37", "exposure.0", "2.5"});
    EXPECT_EQ(set["settings"]["projector-brightness"]["value"], 37);
    EXPECT_EQ(set["settings"]["exposure.0"]["value"], 2.5);
    const nlohmann::json snap = Document({"snap", "--out", m_folders.Path().string()});
    EXPECT_THAT(snap["images"], SizeIs(2));
    const DecodedPng picture = DecodePng(ReadText(snap["images"][1]["file"].get<std::string>()));
    EXPECT_EQ(picture.width, 1280);
}

TEST_F(KorvexctlServiceMode, ShowsEverySettingButThoseOfDirectMode) {
    const nlohmann::json get = Document({"get"});
    EXPECT_TRUE(get["settings"].contains("projector-brightness"));
    EXPECT_FALSE(get["settings"].contains("strobe-work-time"));
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"get", "laser-line-work-time"}, {"set", "heartbeat", "on"}}) {
        std::vector<std::string> arguments{m_head, "--service"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const ChildResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, kNotInServiceMode);
        EXPECT_EQ(result.error,
                  "korvexctl: not available with --service: " + words[1] + ": direct mode only\n");
    }
}

TEST_F(KorvexctlServiceMode, KeepsTextInTheUserMemoryAndNothingBehindAZeroByte) {
    EXPECT_EQ(Document({"user-info", "write", "2", "some text"})["text"], "some text");
    const ChildResult result =
        Run({m_head, "--service", "user-info", "write", "2", "--hex", "410042"});
    EXPECT_EQ(result.exitCode, kNotInServiceMode);
    EXPECT_THAT(result.error, HasSubstr("up to its first zero byte"));
}

TEST_F(KorvexctlServiceMode, ExaminesTheHead) {
    constexpr int kCannotScan = 13;
    constexpr int kWarnings = 14;
    ChildResult result;
    // A busy machine may lose sets, or be too slow.
    support::WaitUntil([&] {
        result = Run({m_head, "--service", "--json", "doctor"});
        return kMayBeTooSlow || result.exitCode != kCannotScan;
    });
    EXPECT_THAT(result.exitCode, AnyOf(0, kCannotScan, kWarnings)) << result.output;
    const nlohmann::json doctor = ParseJson(result.output);
    EXPECT_EQ(doctor["can_scan"], result.exitCode != kCannotScan);
    EXPECT_TRUE(kMayBeTooSlow || doctor["can_scan"]);
    EXPECT_EQ(doctor["simulated"], true);
    for (const nlohmann::json& check : doctor["checks"]) {
        EXPECT_TRUE(check["verdict"] != "FAULT" || check["name"] == "trial scan") << check;
    }
    EXPECT_EQ(doctor["checks"].back()["name"], "disconnect");
}

TEST_F(KorvexctlServiceMode, WatchesTheStatus) {
    const ChildResult result = Run({m_head, "--service", "--json", "status", "--seconds", "2"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.output, Not(IsEmpty()));
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_FALSE(nlohmann::json::parse(line, nullptr, false).is_discarded()) << line;
    }
}

TEST_F(KorvexctlServiceMode, ShowsWhatTheLibraryLogsOnlyWhenAsked) {
    const fs::path log = m_folders.Path() / "log";
    const ChildResult result = Run({"--virtual", "--service", "--log", log.string(), "list"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(ReadText(log), AllOf(HasSubstr("DeviceService Reconnect config"),
                                     HasSubstr("no device start disable enable usb!!!!")));
}

TEST_F(KorvexctlServiceMode, PrintsNothingOfTheProgramsThatItStarts) {
    // Found in the current folder of the command; their output is that of the library's process.
    for (const char* script :
         {"restart_VID0219_PID0813_REV0221.bat", "restart_VID05E3_PID0620_REV2307.bat"}) {
        const fs::path file = m_folders.Path() / script;
        WriteText(file, "#!/bin/sh\necho noise\necho ran >> ran\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    const std::string list = "cd '" + m_folders.Path().string() + "' && '" + KORVEX_KORVEXCTL +
                             "' --virtual --service --json list";
    const ChildResult result = RunChild({"sh", "-c", list}, WithoutHead(Options()));
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(ParseJson(result.output)["cameras"], SizeIs(2));
    EXPECT_EQ(ReadText(m_folders.Path() / "ran"), "ran\nran\n");
}

TEST_F(KorvexctlServiceMode, RefusesWhatRunsInDirectModeOnly) {
    ExpectRefused({"snap-ir"}, "snap-ir: infrared snapshots run in direct mode only");
    ExpectRefused({"reset", "--fpga"}, "reset: resets run in direct mode only");
    ExpectRefused({"info", "--board", "X"}, "--board: the device service takes any board");
    ExpectRefused({"list", "--type", "GC"},
                  "--type: the device service takes cameras of type KV00");
    ExpectRefused({"profile", "load", "--board", "X", "file"},
                  "--board: the device service takes any board");
}

TEST_F(KorvexctlServiceMode, AsksTheBoardDirectlyWithoutTheService) {
    for (const char* command : {"firmware", "usb"}) {
        const ChildResult result = Run({"--virtual", "--service", command});
        EXPECT_EQ(result.exitCode, 0) << result.error;
        EXPECT_EQ(result.output, Run({"--virtual", command}).output);
    }
    EXPECT_EQ(Run({"--virtual", "--service", "help"}).exitCode, 0);
    EXPECT_EQ(Run({"--service=yes", "list"}).exitCode, kUsage);
    EXPECT_THAT(m_folders.Processes(), IsEmpty());
}

TEST_F(KorvexctlServiceMode, NamesTheHeadOfTheServiceThatItEnds) {
    const fs::path file = m_folders.Path() / "head.toml";
    WriteText(file, "[camera]\nserial = \"KV00B2002\"\n");
    ASSERT_EQ(Run({"--virtual=" + file.string(), "service", "start"}).exitCode, 0);
    const long before = os::InstanceLockHolder(m_folders.Runtime() / "service.lock");
    const ChildResult result = Run({"--virtual", "--service", "list"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "korvexctl: the running device service (process " +
                                std::to_string(before) + ") has the simulated head " +
                                file.string() +
                                "; it is started again with the default simulated head\n");
    EXPECT_THAT(result.output, Not(HasSubstr("KV00B2002")));
    // The environment requests a head as well, relative to the folder of the command.
    const std::string list = "cd '" + m_folders.Path().string() +
                             "' && KORVEX_VIRTUAL_HEAD=head.toml '" + KORVEX_KORVEXCTL +
                             "' --service list";
    const ChildResult relative = RunChild({"sh", "-c", list}, Options());
    EXPECT_EQ(relative.exitCode, 0) << relative.error;
    EXPECT_THAT(relative.output, HasSubstr("KV00B2002"));
}

TEST_F(KorvexctlServiceMode, LeavesAServiceAloneThatSomebodyUses) {
    ASSERT_EQ(Run({"--virtual", "service", "start"}).exitCode, 0);
    const long service = os::InstanceLockHolder(m_folders.Runtime() / "service.lock");
    survival::ApplicationProcess application(m_folders, "scan");
    ASSERT_TRUE(application.WaitFor("set", 0));
    ASSERT_TRUE(
        support::WaitUntil([&] { return Service()["client_pid"] == application.Number(); }));
    const ChildResult result = Run({"--virtual", "--service", "list"});
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.error, "korvexctl: process " + std::to_string(application.Number()) +
                                " is using the device service, and --service would start it "
                                "again; end that process first\n");
    EXPECT_EQ(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"), service);
    application.End();
}

TEST_F(KorvexctlServiceMode, WaitsForAServiceThatIsBusy) {
    ASSERT_EQ(Run({"--virtual", "service", "start"}).exitCode, 0);
    const auto service =
        static_cast<pid_t>(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"));
    survival::ApplicationProcess application(m_folders, "scan");
    ASSERT_TRUE(application.WaitFor("set", 0));
    ASSERT_EQ(::kill(service, SIGSTOP), 0);
    ChildProcess list(KorvexctlCommand({"--virtual", "--service", "list"}), WithoutHead(Options()));
    // Longer than one attempt to connect may take.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(700);
    support::WaitUntil([end] { return std::chrono::steady_clock::now() > end; });
    ASSERT_EQ(::kill(service, SIGCONT), 0);
    const ChildResult result = list.Wait();
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_THAT(result.error, HasSubstr("is using the device service"));
    EXPECT_EQ(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"), service);
    application.End();
}

TEST_F(KorvexctlServiceMode, SaysThatAServiceDoesNotAnswer) {
    ASSERT_EQ(Run({"--virtual", "service", "start"}).exitCode, 0);
    const auto service =
        static_cast<pid_t>(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"));
    ASSERT_EQ(::kill(service, SIGSTOP), 0);
    const ChildResult result = Run({"--virtual", "--service", "list"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.error, HasSubstr("(process " + std::to_string(service) +
                                        ") does not answer; it is started again"));
    EXPECT_NE(os::InstanceLockHolder(m_folders.Runtime() / "service.lock"), service);
}

TEST_F(KorvexctlServiceMode, SaysWhichProgramIsMissing) {
    const fs::path folder = m_folders.Path() / "alone";
    fs::create_directory(folder);
    fs::copy_file(KORVEX_KORVEXCTL, folder / "korvexctl");
    const ChildResult result =
        RunChild({(folder / "korvexctl").string(), "--virtual", "--service", "list"},
                 WithoutHead(Options()));
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.error,
              "korvexctl: cannot start " + (folder / "hub.exe").string() + ": no such file\n");
}

TEST_F(KorvexctlServiceMode, SaysThatTheFolderOfTheSocketsHasTooLongAPath) {
    const fs::path folder = m_folders.Path() / std::string(90, 'x');
    fs::create_directory(folder);
    ChildOptions options = Options();
    options.environment.emplace_back("XDG_RUNTIME_DIR", folder.string());
    for (const auto& words : {std::vector<std::string>{"--virtual", "--service", "list"},
                              std::vector<std::string>{"service", "start"}}) {
        const ChildResult result = RunKorvexctl(words, options);
        EXPECT_EQ(result.exitCode, kFailed);
        EXPECT_THAT(result.error, HasSubstr("characters; set XDG_RUNTIME_DIR to a shorter path"));
    }
    EXPECT_THAT(m_folders.Processes(), IsEmpty()) << "nothing was started";
}

TEST_F(KorvexctlServiceMode, SaysThatTheServiceDidNotStart) {
    const fs::path folder = m_folders.Path() / "broken";
    fs::create_directory(folder);
    fs::copy_file(KORVEX_KORVEXCTL, folder / "korvexctl");
    fs::create_symlink(fs::path(KORVEX_KORVEXCTL).replace_filename("hub.exe"), folder / "hub.exe");
    WriteText(folder / "ZrSyncService.exe", "#!/bin/sh\nexit 1\n");
    fs::permissions(folder / "ZrSyncService.exe", fs::perms::owner_all);
    const ChildResult result =
        RunChild({(folder / "korvexctl").string(), "--virtual", "--service", "list"},
                 WithoutHead(Options()));
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: the service is not running"));
}

}  // namespace

}  // namespace Korvex3Sync::tests

int main(int argc, char** argv) {
    // In builds for tests, the pauses of the start are shorter.
    ::setenv("KORVEX_TIME_SCALE", "0.3", 0);
    return Korvex3Sync::tests::RunInProcessNamespace(argc, argv, [](int count, char** arguments) {
        testing::InitGoogleTest(&count, arguments);
        return RUN_ALL_TESTS();
    });
}
