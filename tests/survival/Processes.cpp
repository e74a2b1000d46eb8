#include "survival/Processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "support/WaitUntil.h"

namespace Korvex3Sync::tests::survival {

pid_t StartProcess(const std::vector<std::string>& command,
                   const std::vector<std::pair<std::string, std::string>>& environment,
                   std::array<int, 2> ends) {
    // All that needs memory is made before the fork: this process has other threads.
    std::vector<std::string> words = command;
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    for (const auto& [name, value] : environment) {
        const std::string beginning = name + '=';
        std::erase_if(variables, [&](const std::string& v) { return v.starts_with(beginning); });
        variables.push_back(beginning + value);
    }
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> all;
        for (std::string& text : texts) {
            all.push_back(text.data());
        }
        all.push_back(nullptr);
        return all;
    };
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> variablePointers = pointers(variables);
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const pid_t number = ::fork();
    if (number == 0) {
        ::dup2(ends[0] < 0 ? nothing : ends[0], STDIN_FILENO);
        ::dup2(ends[1] < 0 ? nothing : ends[1], STDOUT_FILENO);
        ::execve(arguments[0], arguments.data(), variablePointers.data());
        ::_exit(127);
    }
    ::close(nothing);
    EXPECT_GT(number, 0);
    return number;
}

void KillProcess(pid_t number) {
    ::kill(number, SIGKILL);
    while (::waitpid(number, nullptr, 0) < 0 && errno == EINTR) {
    }
}

int WaitForEnd(pid_t number) {
    int status = 0;
    const bool ended =
        support::WaitUntil([&] { return ::waitpid(number, &status, WNOHANG) == number; });
    EXPECT_TRUE(ended) << "process " << number << " does not end";
    if (!ended) {
        KillProcess(number);
    }
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void StopProcess(pid_t number) {
    ::kill(number, SIGSTOP);
    int status = 0;
    while (::waitpid(number, &status, WUNTRACED) < 0 && errno == EINTR) {
    }
    EXPECT_TRUE(WIFSTOPPED(status));
}

}  // namespace Korvex3Sync::tests::survival
