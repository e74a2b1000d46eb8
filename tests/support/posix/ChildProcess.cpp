#include "support/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace Korvex3Sync::tests {

namespace {

using Clock = std::chrono::steady_clock;

/// In the child, between fork and exec.
[[noreturn]] void Become(const std::vector<char*>& arguments, const ChildOptions& options,
                         int output, int error) {
    ::dup2(output, STDOUT_FILENO);
    ::dup2(error, STDERR_FILENO);
    for (const auto& [name, value] : options.environment) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    if (options.fileSizeLimit) {
        const rlimit limit{*options.fileSizeLimit, *options.fileSizeLimit};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

/// Appends what can be read; closes the descriptor at its end.
void ReadFrom(int& descriptor, std::string& text) {
    std::array<char, 4096> buffer{};
    const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
    if (got > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    } else if (got == 0 || errno != EINTR) {
        ::close(descriptor);
        descriptor = -1;
    }
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, ChildOptions options)
    : m_options(std::move(options)), m_end(Clock::now() + m_options.deadline) {
    std::array<int, 2> output{-1, -1};
    std::array<int, 2> error{-1, -1};
    if (::pipe2(output.data(), O_CLOEXEC) != 0 || ::pipe2(error.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    m_output = output[0];
    m_error = error[0];
    if (m_options.outputUnread) {
        ::close(std::exchange(m_output, -1));
    }
    int target = output[1];
    if (!m_options.outputFile.empty()) {
        target = ::open(m_options.outputFile.c_str(), O_WRONLY | O_CLOEXEC);
    }
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    m_pid = ::fork();
    if (m_pid == 0) {
        Become(arguments, m_options, target, error[1]);
    }
    m_process = m_pid;
    ::close(output[1]);
    ::close(error[1]);
    if (target != output[1]) {
        ::close(target);
    }
    EXPECT_GT(m_pid, 0);
}

ChildProcess::~ChildProcess() {
    if (m_pid > 0) {
        ::kill(static_cast<pid_t>(m_process), SIGKILL);
        Reap();
    }
    ::close(m_output);
    ::close(m_error);
}

void ChildProcess::Signal(int signal) const {
    ASSERT_EQ(::kill(static_cast<pid_t>(m_process), signal), 0);
}

void ChildProcess::Kill() const {
    Signal(SIGKILL);
}

void ChildProcess::Stop() const {
    Signal(SIGSTOP);
}

void ChildProcess::Continue() const {
    Signal(SIGCONT);
}

bool ChildProcess::IsStopped() const {
    return ProcessIsStopped(m_pid);
}

bool ProcessIsStopped(long process) {
    std::error_code error;
    std::filesystem::directory_iterator threads("/proc/" + std::to_string(process) + "/task",
                                                error);
    // One thread can still run for a moment after another has stopped.
    return !error && std::all_of(begin(threads), end(threads), [](const auto& thread) {
        std::ifstream file(thread.path() / "stat");
        const std::string status{std::istreambuf_iterator<char>(file), {}};
        // The state follows the name of the thread, which is in brackets.
        const std::size_t name = status.rfind(") ");
        return name != std::string::npos && status.compare(name + 2, 1, "T") == 0;
    });
}

bool ChildProcess::ReadSome() {
    std::array<pollfd, 2> ends{pollfd{m_output, POLLIN, 0}, pollfd{m_error, POLLIN, 0}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_end - Clock::now());
    if ((m_output < 0 && m_error < 0) || left.count() <= 0) {
        return false;
    }
    ::poll(ends.data(), ends.size(), static_cast<int>(left.count()));
    if (ends[0].revents != 0) {
        ReadFrom(m_output, m_result.output);
    }
    if (ends[1].revents != 0) {
        ReadFrom(m_error, m_result.error);
    }
    return true;
}

ChildResult ChildProcess::Wait() {
    while (ReadSome()) {
    }
    if (m_output >= 0 || m_error >= 0) {
        ADD_FAILURE() << "the child did not end in time; it said: " << m_result.error;
        ::kill(static_cast<pid_t>(m_process), SIGKILL);
    }
    Reap();
    return m_result;
}

void ChildProcess::Reap() {
    int status = 0;
    while (::waitpid(static_cast<pid_t>(m_process), &status, 0) < 0 && errno == EINTR) {
    }
    m_pid = -1;
    if (WIFEXITED(status)) {
        m_result.exitCode = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        m_result.signal = WTERMSIG(status);
    }
}

}  // namespace Korvex3Sync::tests
