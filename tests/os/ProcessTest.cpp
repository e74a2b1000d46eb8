#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// A program of this user that does nothing until it is ended.
class Sleeper {
public:
    explicit Sleeper(const fs::path& program) : m_child({program.string(), "1000"}) {
        EXPECT_TRUE(support::WaitUntil(
            [&] { return os::OtherProcess(Number()).Is(program.filename().string()); }));
    }
    long Number() const { return m_child.Number(); }
    ChildProcess& Child() { return m_child; }

private:
    ChildProcess m_child;
};

/// The program `sleep` under another name.
fs::path SleepAs(const fs::path& file) {
    fs::copy_file("/bin/sleep", file);
    return file;
}

TEST(OtherProcess, IsKnownByItsProgramAndUser) {
    const TemporaryFolder folder;
    const Sleeper sleeper(SleepAs(folder.Path() / "a program.exe"));
    const os::OtherProcess process(sleeper.Number());
    EXPECT_TRUE(process.Runs());
    EXPECT_TRUE(process.Is("a program.exe"));
    EXPECT_FALSE(process.Is("program.exe"));
    EXPECT_FALSE(process.Is("sleep"));
}

TEST(OtherProcess, IsKnownAfterItsFileWasReplaced) {
    const TemporaryFolder folder;
    const fs::path program = SleepAs(folder.Path() / "old.exe");
    const Sleeper sleeper(program);
    fs::remove(program);
    EXPECT_TRUE(os::OtherProcess(sleeper.Number()).Is("old.exe"));
}

/// A script that does nothing until it is ended. The system cuts its name off.
fs::path ScriptAs(const fs::path& file, const std::string& interpreter) {
    std::ofstream(file) << "#!" << interpreter << "\nwhile :; do sleep 0.1; done\n";
    fs::permissions(file, fs::perms::owner_all);
    return file;
}

TEST(OtherProcess, IsKnownByTheScriptThatWasStarted) {
    const TemporaryFolder folder;
    const std::string name = "a script with a long name.exe";
    for (const char* const interpreter : {"/bin/sh", "/bin/sh -e"}) {
        const Sleeper script(ScriptAs(folder.Path() / name, interpreter));
        const os::OtherProcess process(script.Number());
        EXPECT_FALSE(process.Is(name.substr(0, 15)));
        EXPECT_FALSE(process.Is("a script with a longer name.exe"));
        EXPECT_FALSE(process.Is("1000"));
    }
    ScriptAs(folder.Path() / "argument.exe", "/bin/sh");
    const ChildProcess reader({"/bin/sh", (folder.Path() / "argument.exe").string()});
    const os::OtherProcess process(reader.Number());
    ASSERT_TRUE(support::WaitUntil(
        [&] { return process.Is(fs::canonical("/bin/sh").filename().string()); }));
    EXPECT_FALSE(process.Is("argument.exe"));  // it was not started as a program
}

TEST(EndProcesses, EndsProgramsAndScriptsOfThisName) {
    const TemporaryFolder folder;
    // Nobody else has programs of this name.
    const std::string name = "korvex-" + std::to_string(::getpid()) + ".exe";
    fs::create_directory(folder.Path() / "scripts");
    const Sleeper program(SleepAs(folder.Path() / name));
    const Sleeper second(folder.Path() / name);
    const Sleeper script(ScriptAs(folder.Path() / "scripts" / name, "/bin/sh"));
    const Sleeper other(SleepAs(folder.Path() / ("other-" + name)));
    os::EndProcesses(name);
    for (const Sleeper* const ended : {&program, &second, &script}) {
        EXPECT_FALSE(os::OtherProcess(ended->Number()).Runs());
    }
    EXPECT_TRUE(os::OtherProcess(other.Number()).Runs());
    os::EndProcesses(name);
}

TEST(OtherProcess, OfAnotherUserIsNotTaken) {
    const TemporaryFolder folder;
    const fs::path program = SleepAs(folder.Path() / "other.exe");
    fs::permissions(folder.Path(), fs::perms::owner_all | fs::perms::others_all);
    ChildProcess child({"setpriv", "--reuid=65534", "--clear-groups", program.string(), "1000"});
    const fs::path link = "/proc/" + std::to_string(child.Number()) + "/exe";
    std::error_code error;
    ASSERT_TRUE(support::WaitUntil([&] { return fs::read_symlink(link, error) == program; }));
    EXPECT_TRUE(os::OtherProcess(child.Number()).Runs());
    EXPECT_FALSE(os::OtherProcess(child.Number()).Is("other.exe"));
}

TEST(OtherProcess, ThatEndedStaysEnded) {
    const TemporaryFolder folder;
    Sleeper sleeper(SleepAs(folder.Path() / "ends.exe"));
    const os::OtherProcess process(sleeper.Number());
    EXPECT_FALSE(process.WaitForEnd(1ms));
    // A stopped process has to end too.
    sleeper.Child().Signal(SIGSTOP);
    EXPECT_TRUE(process.Kill());
    EXPECT_TRUE(
        process.WaitForEnd(std::chrono::duration_cast<std::chrono::milliseconds>(kDeadline)));
    EXPECT_FALSE(process.Is("ends.exe"));
    EXPECT_EQ(sleeper.Child().Wait().signal, SIGKILL);
    EXPECT_FALSE(process.Runs());
    EXPECT_FALSE(process.Kill());
}

TEST(OtherProcess, WithAnImpossibleNumberIsNone) {
    for (const long number : {0L, -1L, -999L, 0x7fffffffL}) {
        const os::OtherProcess process(number);
        EXPECT_FALSE(process.Runs()) << number;
        EXPECT_FALSE(process.Is("")) << number;
        EXPECT_TRUE(process.WaitForEnd(1h)) << number;
        EXPECT_FALSE(process.Kill()) << number;
    }
}

TEST(InstanceLock, IsHeldByOneAtATime) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    EXPECT_EQ(os::InstanceLockHolder(file), 0);
    std::error_code error;
    {
        const os::File lock = os::TakeInstanceLock(file, error);
        EXPECT_TRUE(lock) << error.message();
        EXPECT_EQ(os::InstanceLockHolder(file), os::CurrentProcess());
        EXPECT_FALSE(os::TakeInstanceLock(file, error));
        EXPECT_EQ(error, std::errc::resource_unavailable_try_again);
        EXPECT_EQ(os::InstanceLockHolder(file), os::CurrentProcess()) << "still";
    }
    EXPECT_EQ(os::InstanceLockHolder(file), 0);
    EXPECT_TRUE(os::TakeInstanceLock(file, error)) << "the file stays and is used again";
}

TEST(InstanceLock, OfAKilledProcessIsFree) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::error_code error;
        const os::File lock = os::TakeInstanceLock(file, error);
        while (true) {
            ::pause();
        }
    }
    EXPECT_TRUE(support::WaitUntil([&] { return os::InstanceLockHolder(file) == child; }));
    // Before its parent has fetched its end: a process that nobody fetches must not hold a lock.
    EXPECT_EQ(::kill(child, SIGKILL), 0);
    EXPECT_TRUE(support::WaitUntil([&] { return os::InstanceLockHolder(file) == 0; }));
    std::error_code error;
    EXPECT_TRUE(os::TakeInstanceLock(file, error)) << error.message();
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST(InstanceLock, FollowsNoLinkAndNeedsAFolder) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    fs::create_symlink(folder.Path() / "elsewhere", file);
    std::error_code error;
    EXPECT_FALSE(os::TakeInstanceLock(file, error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(fs::exists(folder.Path() / "elsewhere"));
    EXPECT_FALSE(os::TakeInstanceLock(folder.Path() / "none" / "a.lock", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(os::InstanceLockHolder(folder.Path() / "none" / "a.lock"), 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
