#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "korvexctl/Korvexctl.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/OwnFolders.h"
#include "support/Pattern.h"
#include "support/WaitUntil.h"
#include "survival/ApplicationProcess.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kNotRunning = 16;
constexpr int kFailed = 17;
constexpr int kAlreadyRuns = 3;

/// korvexctl with a hub and a service of its own.
class KorvexctlService : public ::testing::Test {
protected:
    ChildOptions Options() const {
        ChildOptions options;
        options.environment = m_folders.Environment();
        return options;
    }
    /// Runs `korvexctl service ...`.
    ChildResult Run(const std::vector<std::string>& words) const {
        std::vector<std::string> arguments{"service"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return RunKorvexctl(arguments, Options());
    }
    nlohmann::json Status() const { return ParseJson(Run({"status", "--json"}).output); }
    long Holder(const char* lock) const {
        return os::InstanceLockHolder(m_folders.Runtime() / lock);
    }
    std::string Program(const char* name) const {
        return fs::path(KORVEX_KORVEXCTL).replace_filename(name).string();
    }

    const OwnFolders m_folders;
};

TEST_F(KorvexctlService, ThatDoesNotRunIsSaidWithAnExitCodeOfItsOwn) {
    const ChildResult result = Run({"status"});
    EXPECT_EQ(result.exitCode, kNotRunning);
    EXPECT_EQ(result.output, "hub      not running\nservice  not running\n");
    EXPECT_EQ(result.error,
              "korvexctl: the hub is not running; start it with: korvexctl service start\n");
    const nlohmann::json status = Status();
    for (const char* program : {"hub", "service"}) {
        EXPECT_EQ(status[program]["running"], false);
        EXPECT_TRUE(status[program]["pid"].is_null());
    }
    EXPECT_EQ(status["error"]["exit_code"], kNotRunning);
}

TEST_F(KorvexctlService, ThatDoesNotRunIsStoppedWithoutAnError) {
    const ChildResult result = Run({"stop"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "the service was not running\nthe hub was not running\n");
}

TEST_F(KorvexctlService, ThatNeverRanHasNoLog) {
    const ChildResult result = Run({"log"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "hub: no log file in " + m_folders.Logs().string() +
                                 "\nservice: no log file in " + m_folders.Logs().string() + "\n");
    EXPECT_TRUE(ParseJson(Run({"log", "--json"}).output)["hub"]["file"].is_null());
}

TEST_F(KorvexctlService, LogWithTheLineEndsOfWindowsIsShownLikeAnyOther) {
    fs::create_directories(m_folders.Logs());
    WriteText(m_folders.Logs() / "hub.20260101-000000.1", "first\r\nlast\r\n");
    EXPECT_THAT(Run({"log"}).output, HasSubstr("\n  first\n  last\n"));
}

TEST_F(KorvexctlService, FolderThatOthersMayEnterIsRefused) {
    fs::create_directory(m_folders.Runtime());
    fs::permissions(m_folders.Runtime(), fs::perms::all);
    for (const char* command : {"start", "status", "stop"}) {
        const ChildResult result = Run({command});
        EXPECT_EQ(result.exitCode, kFailed) << command;
        EXPECT_THAT(result.error, HasSubstr(m_folders.Runtime().string())) << command;
    }
}

TEST_F(KorvexctlService, RefusedHeadIsSaidBeforeAnythingStarts) {
    const ChildResult result = RunKorvexctl(
        {"--virtual=" + (m_folders.Path() / "none.toml").string(), "service", "start"}, Options());
    constexpr int kHeadRefused = 8;
    EXPECT_EQ(result.exitCode, kHeadRefused);
    EXPECT_THAT(m_folders.Processes(), IsEmpty());
}

/// A korvexctl whose hub and service are what a test makes of them.
class KorvexctlServiceBeside : public KorvexctlService {
protected:
    KorvexctlServiceBeside() {
        fs::create_directory(m_programs);
        fs::copy_file(KORVEX_KORVEXCTL, m_programs / "korvexctl");
    }
    void WriteScript(const std::string& name, const std::string& text) const {
        WriteText(m_programs / name, "#!/bin/sh\n" + text);
        fs::permissions(m_programs / name, fs::perms::owner_all);
    }
    ChildResult RunBeside(const std::vector<std::string>& words) const {
        std::vector<std::string> command{(m_programs / "korvexctl").string(), "service"};
        command.insert(command.end(), words.begin(), words.end());
        return RunChild(command, WithoutHead(Options()));
    }

    const fs::path m_programs = m_folders.Path() / "bin";
};

TEST_F(KorvexctlServiceBeside, ProgramThatIsMissingIsNamed) {
    const ChildResult result = RunBeside({"start"});
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.error,
              "korvexctl: cannot start " + (m_programs / "hub.exe").string() + ": no such file\n");
    EXPECT_THAT(m_folders.Processes(), IsEmpty());
    EXPECT_TRUE(fs::is_empty(m_folders.Logs()));
}

TEST_F(KorvexctlServiceBeside, ProgramThatEndsAtItsStartIsQuotedWithItsLog) {
    const fs::path log = m_folders.Logs() / "hub.20260101-000000.1";
    WriteScript("hub.exe", "echo first >&2; echo 'no \033[1mroom' >&2; touch '" + log.string() +
                               "'; exit 1\n");
    const ChildResult result = RunBeside({"start"});
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.error,
              "korvexctl: the hub ended during its start: no \\x1B[1mroom; its log is " +
                  log.string() + "\n");
    EXPECT_FALSE(fs::exists(m_folders.Logs() / "start-hub"));
}

TEST_F(KorvexctlServiceBeside, ProgramRunsInItsFolderWithoutArguments) {
    WriteScript("hub.exe", "echo \"$0 in $(pwd), $# arguments\" >&2; exit 1\n");
    EXPECT_THAT(RunBeside({"start", "--virtual"}).error,
                HasSubstr((m_programs / "hub.exe").string() + " in " + m_programs.string() +
                          ", 0 arguments\n"));
}

TEST_F(KorvexctlServiceBeside, ForeignProcessThatHoldsTheLockIsLeftAlone) {
    ASSERT_EQ(Run({"status"}).exitCode, kNotRunning) << "makes the folder";
    std::error_code error;
    const os::File lock = os::TakeInstanceLock(m_folders.Runtime() / "service.lock", error);
    ASSERT_TRUE(lock);
    const ChildResult result = Run({"stop"});
    EXPECT_EQ(result.exitCode, kFailed);
    EXPECT_EQ(result.error, "korvexctl: the service does not end, and process " +
                                std::to_string(os::CurrentProcess()) +
                                " is not ZrSyncService.exe of this user; it was left alone\n");
}

/// With the built hub alone.
class Hub : public KorvexctlService {
protected:
    Hub() : m_hub({Program("hub.exe")}, Options()) {
        EXPECT_TRUE(support::WaitUntil([this] { return Status()["hub"]["answers"] == true; }));
    }

    ChildProcess m_hub;
};

TEST_F(Hub, SaysWhatItIs) {
    const nlohmann::json hub = Status()["hub"];
    EXPECT_EQ(hub["running"], true);
    EXPECT_EQ(hub["pid"], m_hub.Number());
    EXPECT_GE(hub["uptime_s"].get<int>(), 0);
    const std::string version = ParseJson(RunKorvexctl({"--version", "--json"}).output)["version"];
    EXPECT_EQ(hub["version"], version);
    EXPECT_THAT(Run({"status"}).output,
                MatchesPattern("hub      process " + std::to_string(m_hub.Number()) +
                               ", up [0-9]+ s, version " + version + "\nservice  not running\n"));
}

TEST_F(Hub, RunsOnce) {
    const ChildResult second = RunChild({Program("hub.exe")}, Options());
    EXPECT_EQ(second.exitCode, kAlreadyRuns);
    EXPECT_EQ(second.error,
              "hub.exe: already running, process " + std::to_string(m_hub.Number()) + "\n");
    EXPECT_EQ(Status()["hub"]["pid"], m_hub.Number());
}

TEST_F(Hub, EndsOnRequest) {
    const ChildResult result = Run({"stop"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "the service was not running\nthe hub has ended\n");
    EXPECT_EQ(m_hub.Wait().exitCode, 0);
    EXPECT_EQ(Holder("hub.lock"), 0);
    EXPECT_FALSE(fs::exists(m_folders.Runtime() / "hub"));
}

TEST_F(Hub, EndsWithSigterm) {
    m_hub.Signal(SIGTERM);
    EXPECT_EQ(m_hub.Wait().exitCode, 0);
    EXPECT_FALSE(fs::exists(m_folders.Runtime() / "hub"));
}

TEST_F(Hub, ThatHangsIsKilled) {
    m_hub.Signal(SIGSTOP);
    ASSERT_TRUE(support::WaitUntil([&] { return m_hub.IsStopped(); }));
    const ChildResult status = Run({"status"});
    EXPECT_EQ(status.exitCode, kNotRunning);
    EXPECT_THAT(status.output, HasSubstr("hub      process " + std::to_string(m_hub.Number()) +
                                         ", does not answer\n"));
    const ChildResult result = Run({"stop"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.output, HasSubstr("the hub did not end when asked; killed process " +
                                         std::to_string(m_hub.Number()) + "\n"));
    EXPECT_EQ(m_hub.Wait().signal, SIGKILL);
    // The next one starts over what that one left.
    ChildProcess next({Program("hub.exe")}, Options());
    EXPECT_TRUE(support::WaitUntil([&] { return Status()["hub"]["pid"] == next.Number(); }));
}

TEST_F(Hub, LeavesTheStreamsOfItsStarter) {
    // A starter that does not read its pipes must not block it, and Ctrl-C must not reach it.
    const fs::path streams = "/proc/" + std::to_string(m_hub.Number()) + "/fd";
    for (const char* stream : {"0", "1", "2"}) {
        ASSERT_TRUE(support::WaitUntil([&] {
            return fs::read_symlink(streams / stream) == "/dev/null";
        })) << stream;
    }
    EXPECT_EQ(::getsid(m_hub.Number()), m_hub.Number());
}

TEST_F(Hub, WritesALog) {
    const ChildResult result = Run({"log", "--lines", "1"});
    const std::string hub = m_folders.Logs().string() + "/hub.";
    EXPECT_THAT(result.output, MatchesPattern("hub: " + hub +
                                              "[-0-9.]+\n  I.* hub.* at work.*\n"
                                              "service: no log file in .*\n"));
    const nlohmann::json document = ParseJson(Run({"log", "--json"}).output);
    EXPECT_GT(document["hub"]["lines"].size(), 1U);
    EXPECT_TRUE(fs::exists(document["hub"]["file"].get<std::string>()));
}

TEST_F(Hub, TakesNoArguments) {
    const ChildResult result = RunChild({Program("hub.exe"), "--help"}, Options());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.error, "hub.exe: takes no arguments\n");
}

/// With both programs, started by the command.
class Service : public KorvexctlService {
protected:
    Service() {
        const ChildResult started = RunKorvexctl({"--virtual", "service", "start"}, Options());
        EXPECT_EQ(started.exitCode, 0) << started.error;
        EXPECT_EQ(started.output, "the hub is running, " + ProcessOf("hub.lock") +
                                      "\nthe service is running, " + ProcessOf("service.lock") +
                                      "\n");
    }
    ~Service() override { EXPECT_THAT(m_folders.Processes().size(), testing::Le(2U)); }

    std::string ProcessOf(const char* lock) const {
        return "process " + std::to_string(Holder(lock));
    }
};

TEST_F(Service, RunsInTheBackgroundUntilItIsStopped) {
    nlohmann::json status;
    // On a busy machine an answer may come late.
    EXPECT_TRUE(support::WaitUntil([&] {
        status = Status();
        return !status.contains("error");
    }));
    for (const char* program : {"hub", "service"}) {
        EXPECT_EQ(status[program]["running"], true) << program;
        EXPECT_EQ(status[program]["answers"], true) << program;
        const pid_t process = status[program]["pid"];
        EXPECT_EQ(process, Holder((std::string(program) + ".lock").c_str()));
        EXPECT_NE(::getsid(process), ::getsid(0)) << "Ctrl-C must not reach it";
    }
    EXPECT_TRUE(status["service"]["client_pid"].is_null());
    EXPECT_TRUE(status["service"]["device"].is_null());
    EXPECT_THAT(Run({"status"}).output, HasSubstr("\nclient   none\ndevice   none\n"));

    const ChildResult again = Run({"start"});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.output, "the hub was running already, " + ProcessOf("hub.lock") +
                                "\nthe service was running already, " + ProcessOf("service.lock") +
                                "\n");

    const ChildResult stopped = Run({"stop"});
    EXPECT_EQ(stopped.exitCode, 0) << stopped.error;
    EXPECT_EQ(stopped.output, "the service has ended\nthe hub has ended\n");
    EXPECT_THAT(m_folders.Processes(), IsEmpty());
    EXPECT_EQ(FileNames(m_folders.Runtime()),
              (std::vector<std::string>{"hub.lock", "service.lock"}));
}

TEST_F(KorvexctlService, KeepsNoFileOfItsStarterOpen) {
    const fs::path file = m_folders.Path() / "lock of a script";
    const int inherited = ::open(file.c_str(), O_WRONLY | O_CREAT, S_IRWXU);
    ASSERT_GE(inherited, 0) << file;
    EXPECT_EQ(RunKorvexctl({"--virtual", "service", "start"}, Options()).exitCode, 0);
    ::close(inherited);
    for (const char* const lock : {"hub.lock", "service.lock"}) {
        ASSERT_NE(Holder(lock), 0);
        for (const auto& entry :
             fs::directory_iterator("/proc/" + std::to_string(Holder(lock)) + "/fd")) {
            std::error_code closed;
            EXPECT_NE(fs::read_symlink(entry, closed), file) << lock;
        }
    }
    EXPECT_EQ(Run({"stop"}).exitCode, 0);
}

TEST_F(Service, ShowsItsClientAndTheDevice) {
    survival::ApplicationProcess application(m_folders, "scan");
    ASSERT_TRUE(application.WaitFor("set", 0));
    // A service that is busy with a scan on a loaded machine may not answer in time at once.
    ChildResult shown;
    ASSERT_TRUE(support::WaitUntil([&] {
        shown = Run({"status"});
        return shown.exitCode == 0;
    })) << shown.error;
    EXPECT_THAT(shown.output,
                HasSubstr("\nclient   process " + std::to_string(application.Number()) + "\n"));
    EXPECT_THAT(shown.output, ContainsPattern("\ndevice   KV00 \\(id [0-9]+\\), [0-9.]+ sets/s\n"));
    EXPECT_THAT(shown.output, ContainsPattern("\nlosses   .*lost"));
    nlohmann::json service;
    EXPECT_TRUE(support::WaitUntil([&] {
        service = Status()["service"];
        return service["sets_per_s"] > 0;
    })) << "sets arrive";
    EXPECT_EQ(service["client_pid"], application.Number());
    EXPECT_EQ(service["device"], "KV00");
    EXPECT_NE(service["device_id"], 0);
    for (const char* place : {"missing_keys", "sets_not_written", "notices_not_sent"}) {
        EXPECT_TRUE(service["losses"].contains(place)) << place;
    }
    application.End();
    EXPECT_TRUE(support::WaitUntil([&] { return Status()["service"]["client_pid"].is_null(); }));
}

TEST_F(Service, ThatHangsIsShownNotStartedAgainAndKilled) {
    const long process = Holder("service.lock");
    ASSERT_EQ(::kill(static_cast<pid_t>(process), SIGSTOP), 0);
    ASSERT_TRUE(support::WaitUntil([&] { return ProcessIsStopped(process); }));
    const ChildResult status = Run({"status"});
    EXPECT_EQ(status.exitCode, kNotRunning);
    EXPECT_THAT(status.output,
                HasSubstr("service  process " + std::to_string(process) + ", does not answer\n"));
    EXPECT_THAT(status.error, HasSubstr("the service does not answer; restart it with"));
    const ChildResult started = Run({"start"});
    EXPECT_EQ(started.exitCode, kFailed);
    EXPECT_THAT(started.error,
                HasSubstr("the service, process " + std::to_string(process) +
                          ", does not answer; korvexctl service stop ends it; its log is " +
                          m_folders.Logs().string() + "/ZrSyncService."));
    const ChildResult stopped = Run({"stop"});
    EXPECT_EQ(stopped.exitCode, 0) << stopped.error;
    EXPECT_EQ(stopped.output, "the service did not end when asked; killed process " +
                                  std::to_string(process) + "\nthe hub has ended\n");
    EXPECT_THAT(m_folders.Processes(), IsEmpty());
}

TEST_F(KorvexctlService, GetsAHeadFileFromTheFolderOfTheCommand) {
    WriteText(m_folders.Path() / "head.toml", "[camera]\nserial = \"KV00B2002\"\n");
    const std::string start = "cd '" + m_folders.Path().string() + "' && '" + KORVEX_KORVEXCTL +
                              "' --virtual=head.toml service start";
    EXPECT_EQ(RunChild({"sh", "-c", start}, WithoutHead(Options())).exitCode, 0);
    survival::ApplicationProcess application(m_folders, "count");
    const auto counted = application.WaitFor("counted", 0);
    ASSERT_TRUE(counted);
    EXPECT_EQ(counted->word, "2") << "the cameras of the head";
    application.End();
    EXPECT_EQ(Run({"stop"}).exitCode, 0);
}

}  // namespace

}  // namespace Korvex3Sync::tests
