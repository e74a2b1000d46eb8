#include "platform/os/Process.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Descriptors.h"

namespace Korvex3Sync::os {

namespace {

namespace fs = std::filesystem;

/// What the system appends to the name of a program whose file was replaced or removed.
constexpr std::string_view kDeleted = " (deleted)";

std::string WithoutDeleted(std::string name) {
    if (name.ends_with(kDeleted)) {
        name.resize(name.size() - kDeleted.size());
    }
    return name;
}

/// Whether the process that /proc shows in this folder was started as a script of this name. It has
/// the name of the script then, cut off by the system, although its program is an interpreter.
bool IsScript(const fs::path& folder, const std::string& name) {
    constexpr std::size_t kSystemNameLength = 15;
    std::string systemName;
    std::getline(std::ifstream(folder / "comm"), systemName);
    if (systemName != name.substr(0, kSystemNameLength)) {
        return false;
    }
    std::ifstream command(folder / "cmdline");
    std::string interpreter;
    std::getline(command, interpreter, '\0');
    // The script comes behind the interpreter, with at most one argument between.
    std::string argument;
    for (int i = 0; i < 2 && std::getline(command, argument, '\0'); ++i) {
        if (fs::path(argument).filename() == name) {
            return true;
        }
    }
    return false;
}

int DescriptorOf(std::intptr_t reference) {
    return static_cast<int>(reference);
}

/// Waits for processes that were killed; longer only if the system cannot end one.
constexpr std::chrono::milliseconds kEndLimit{5000};

}  // namespace

long CurrentProcess() {
    return ::getpid();
}

bool OtherThreadsAreGone() {
    return false;
}

void BecomeBackgroundProcess() {
    // Fails for the leader of a process group, which only a shell starts.
    ::setsid();
    std::fflush(stdout);
    const int nothing = OpenNothing();
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        RedirectDescriptor(nothing, standard);
    }
    if (nothing > STDERR_FILENO) {
        ::close(nothing);
    }
}

OtherProcess::OtherProcess(long number)
    : m_number(number), m_reference(number > 0 ? ::syscall(SYS_pidfd_open, number, 0) : -1) {}

OtherProcess::~OtherProcess() {
    if (m_reference >= 0) {
        ::close(DescriptorOf(m_reference));
    }
}

bool OtherProcess::Runs() const {
    return m_reference >= 0 && !WaitForEnd(std::chrono::milliseconds(0));
}

bool OtherProcess::Is(const std::string& program) const {
    const fs::path folder = "/proc/" + std::to_string(m_number);
    struct stat owner {};
    std::error_code error;
    const fs::path file = fs::read_symlink(folder / "exe", error);
    return !error && ::stat(folder.c_str(), &owner) == 0 && owner.st_uid == ::geteuid() &&
           (WithoutDeleted(file.filename().string()) == program || IsScript(folder, program)) &&
           Runs();  // as it still runs, all this was asked about it and no later process
}

bool OtherProcess::WaitForEnd(std::chrono::milliseconds nominalLimit) const {
    if (m_reference < 0) {
        return true;
    }
    const auto deadline = std::chrono::steady_clock::now() + Scaled(nominalLimit);
    pollfd end{DescriptorOf(m_reference), POLLIN, 0};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        const int count =
            ::poll(&end, 1, static_cast<int>(std::max(left, std::chrono::milliseconds(0)).count()));
        if (count >= 0 || errno != EINTR) {
            return count > 0;
        }
    }
}

bool OtherProcess::Kill() const {
    return m_reference >= 0 &&
           ::syscall(SYS_pidfd_send_signal, DescriptorOf(m_reference), SIGKILL, nullptr, 0) == 0;
}

void EndProcesses(const std::string& program) {
    std::vector<std::unique_ptr<OtherProcess>> killed;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const long number = std::atol(entry->path().filename().c_str());
        if (number <= 0 || number == CurrentProcess()) {
            continue;
        }
        auto process = std::make_unique<OtherProcess>(number);
        if (process->Is(program) && process->Kill()) {
            killed.push_back(std::move(process));
        }
    }
    for (const auto& process : killed) {
        process->WaitForEnd(kEndLimit);
    }
}

}  // namespace Korvex3Sync::os
