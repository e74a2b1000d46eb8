#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "os/Sleeper.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(OtherProcess, IsKnownByItsProgramAndUser) {
    const TemporaryFolder folder;
    const Sleeper sleeper(SleeperAs(folder.Path() / "a program.exe"));
    const os::OtherProcess process(sleeper.Number());
    EXPECT_TRUE(process.Runs());
    EXPECT_TRUE(process.Is("a program.exe"));
    EXPECT_FALSE(process.Is("program.exe"));
    EXPECT_FALSE(process.Is(fs::path(KORVEX_OS_PEER).filename().string()));
}

TEST(EndProcesses, EndsProgramsOfThisName) {
    const TemporaryFolder folder;
    // Nobody else has programs of this name.
    const std::string name = "korvex-" + std::to_string(os::CurrentProcess()) + ".exe";
    const Sleeper program(SleeperAs(folder.Path() / name));
    const Sleeper second(folder.Path() / name);
    const Sleeper other(SleeperAs(folder.Path() / ("other-" + name)));
    os::EndProcesses(name);
    for (const Sleeper* const ended : {&program, &second}) {
        EXPECT_FALSE(os::OtherProcess(ended->Number()).Runs());
    }
    EXPECT_TRUE(os::OtherProcess(other.Number()).Runs());
    os::EndProcesses(name);
}

TEST(OtherProcess, ThatEndedStaysEnded) {
    const TemporaryFolder folder;
    Sleeper sleeper(SleeperAs(folder.Path() / "ends.exe"));
    const os::OtherProcess process(sleeper.Number());
    EXPECT_FALSE(process.WaitForEnd(1ms));
    EXPECT_TRUE(process.Kill());
    EXPECT_TRUE(
        process.WaitForEnd(std::chrono::duration_cast<std::chrono::milliseconds>(kDeadline)));
    EXPECT_FALSE(process.Is("ends.exe"));
    EXPECT_NE(sleeper.Child().Wait().exitCode, 0);
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

TEST(InstanceLock, FileHasTheNumberOfItsHolderOnly) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    std::ofstream(file) << "12345678901234567890\n";
    std::error_code error;
    const os::File lock = os::TakeInstanceLock(file, error);
    EXPECT_TRUE(lock) << error.message();
    std::stringstream content;
    content << std::ifstream(file).rdbuf();
    EXPECT_EQ(content.str(), std::to_string(os::CurrentProcess()) + "\n");
}

TEST(InstanceLock, OfAKilledProcessIsFree) {
    const TemporaryFolder folder;
    const fs::path file = folder.Path() / "a.lock";
    const ChildProcess holder({KORVEX_OS_PEER, file.string()});
    EXPECT_TRUE(
        support::WaitUntil([&] { return os::InstanceLockHolder(file) == holder.Number(); }));
    // Before its parent has fetched its end: a process that nobody fetches must not hold a lock.
    EXPECT_TRUE(os::OtherProcess(holder.Number()).Kill());
    EXPECT_TRUE(support::WaitUntil([&] { return os::InstanceLockHolder(file) == 0; }));
    std::error_code error;
    EXPECT_TRUE(os::TakeInstanceLock(file, error)) << error.message();
}

TEST(InstanceLock, NeedsAFolder) {
    const TemporaryFolder folder;
    std::error_code error;
    EXPECT_FALSE(os::TakeInstanceLock(folder.Path() / "none" / "a.lock", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(os::InstanceLockHolder(folder.Path() / "none" / "a.lock"), 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
