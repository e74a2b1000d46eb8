#include "support/ProcessNamespace.h"

#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/Environment.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

/// Set in the process namespace; the folder is removed at the end.
constexpr char kFolderVariable[] = "KORVEX_NAMESPACE_FOLDER";

/// Returns only if it fails.
void StartInOwnNamespace(char** argv) {
    char name[] = "/tmp/korvex-names-XXXXXX";
    if (::mkdtemp(name) == nullptr) {
        return;
    }
    const fs::path self = fs::read_symlink("/proc/self/exe");
    const fs::path program = fs::path(name) / self.filename();
    fs::copy_file(self, program);
    ::setenv(kFolderVariable, name, 1);
    std::vector<const char*> command{"unshare", "--user",       "--map-root-user", "--pid",
                                     "--fork",  "--mount-proc", "--kill-child",    program.c_str()};
    for (char** argument = argv + 1; *argument != nullptr; ++argument) {
        command.push_back(*argument);
    }
    command.push_back(nullptr);
    ::execvp(command[0], const_cast<char* const*>(command.data()));
}

/// Ends all other processes of the namespace, whose first process this is.
void EndOtherProcesses() {
    if (::getpid() == 1) {
        ::kill(-1, SIGKILL);
        while (::wait(nullptr) > 0) {
        }
    }
}

}  // namespace

int RunInProcessNamespace(int argc, char** argv, int (*run)(int argc, char** argv)) {
    const char* const variable = std::getenv(kFolderVariable);
    if (variable == nullptr) {
        StartInOwnNamespace(argv);
        std::perror("cannot start in a process namespace");
        return EXIT_FAILURE;
    }
    const fs::path folder = variable;
    ::unsetenv(kFolderVariable);
    if (::mount("tmpfs", "/dev/shm", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") != 0) {
        std::perror("cannot mount a /dev/shm of its own");
        return EXIT_FAILURE;
    }
    const int result = run(argc, argv);
    EndOtherProcesses();
    RemoveFolder(folder);
    return result;
}

}  // namespace Korvex3Sync::tests
