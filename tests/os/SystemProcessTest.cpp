#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "os/Sleeper.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "virtual_head/TestFiles.h"

// What only a system with scripts, signals and links has.

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

/// A script that does nothing until it is ended. The system cuts its name off.
fs::path ScriptAs(const fs::path& file, const std::string& interpreter) {
    std::ofstream(file) << "#!" << interpreter << "\nwhile :; do sleep 0.1; done\n";
    fs::permissions(file, fs::perms::owner_all);
    return file;
}

TEST(OtherSystemProcess, IsKnownAfterItsFileWasReplaced) {
    const TemporaryFolder folder;
    const fs::path program = SleeperAs(folder.Path() / "old.exe");
    const Sleeper sleeper(program);
    fs::remove(program);
    EXPECT_TRUE(os::OtherProcess(sleeper.Number()).Is("old.exe"));
}

TEST(OtherSystemProcess, IsKnownByTheScriptThatWasStarted) {
    const TemporaryFolder folder;
    const std::string name = "a script with a long name.exe";
    for (const char* const interpreter : {"/bin/sh", "/bin/sh -e"}) {
        const Sleeper script(ScriptAs(folder.Path() / name, interpreter));
        const os::OtherProcess process(script.Number());
        EXPECT_FALSE(process.Is(name.substr(0, 15)));
        EXPECT_FALSE(process.Is("a script with a longer name.exe"));
    }
    ScriptAs(folder.Path() / "argument.exe", "/bin/sh");
    const ChildProcess reader({"/bin/sh", (folder.Path() / "argument.exe").string()});
    const os::OtherProcess process(reader.Number());
    ASSERT_TRUE(support::WaitUntil(
        [&] { return process.Is(fs::canonical("/bin/sh").filename().string()); }));
    EXPECT_FALSE(process.Is("argument.exe"));  // it was not started as a program
}

TEST(EndSystemProcesses, EndsScriptsOfThisName) {
    const TemporaryFolder folder;
    // Nobody else has scripts of this name.
    const std::string name = "korvex-script-" + std::to_string(::getpid()) + ".exe";
    const Sleeper script(ScriptAs(folder.Path() / name, "/bin/sh"));
    os::EndProcesses(name);
    EXPECT_FALSE(os::OtherProcess(script.Number()).Runs());
}

TEST(OtherSystemProcess, OfAnotherUserIsNotTaken) {
    const TemporaryFolder folder;
    const fs::path program = folder.Path() / "other.exe";
    // The other user may have no access to our own programs and their libraries.
    fs::copy_file(fs::canonical("/bin/sleep"), program);
    fs::permissions(folder.Path(), fs::perms::owner_all | fs::perms::others_all);
    ChildProcess child(
        {"setpriv", "--reuid=65534", "--clear-groups", program.string(), "infinity"});
    const fs::path link = "/proc/" + std::to_string(child.Number()) + "/exe";
    std::error_code error;
    ASSERT_TRUE(support::WaitUntil([&] { return fs::read_symlink(link, error) == program; }));
    EXPECT_TRUE(os::OtherProcess(child.Number()).Runs());
    EXPECT_FALSE(os::OtherProcess(child.Number()).Is("other.exe"));
}

TEST(OtherSystemProcess, ThatIsStoppedEndsToo) {
    const TemporaryFolder folder;
    Sleeper sleeper(SleeperAs(folder.Path() / "stopped.exe"));
    const os::OtherProcess process(sleeper.Number());
    sleeper.Child().Signal(SIGSTOP);
    EXPECT_TRUE(process.Kill());
    EXPECT_TRUE(
        process.WaitForEnd(std::chrono::duration_cast<std::chrono::milliseconds>(kDeadline)));
    EXPECT_EQ(sleeper.Child().Wait().signal, SIGKILL);
}

TEST(SystemInstanceLock, FollowsNoLink) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    fs::create_symlink(folder.Path() / "elsewhere", file);
    std::error_code error;
    EXPECT_FALSE(os::TakeInstanceLock(file, error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(fs::exists(folder.Path() / "elsewhere"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
