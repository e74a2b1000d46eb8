#include <unistd.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

/// Set in the process namespace; the folder is removed at the end.
constexpr char kFolderVariable[] = "KORVEX_SERVICE_TESTS_FOLDER";

/// Starts this program once more, in a process namespace of its own and as a file in a new folder,
/// which is its application directory then. Returns only if that fails.
void StartInOwnNamespace(char** argv) {
    char name[] = "/tmp/korvex-client-XXXXXX";
    if (::mkdtemp(name) == nullptr) {
        return;
    }
    const fs::path program = fs::path(name) / "service_tests";
    fs::copy_file(fs::read_symlink("/proc/self/exe"), program);
    ::setenv(kFolderVariable, name, 1);
    std::vector<const char*> command{"unshare", "--user",       "--map-root-user", "--pid",
                                     "--fork",  "--mount-proc", "--kill-child",    program.c_str()};
    for (char** argument = argv + 1; *argument != nullptr; ++argument) {
        command.push_back(*argument);
    }
    command.push_back(nullptr);
    ::execvp(command[0], const_cast<char* const*>(command.data()));
}

/// In the process namespace.
int RunTests(int argc, char** argv, const fs::path& folder) {
    ::unsetenv(kFolderVariable);
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::error_code error;
    fs::remove_all(folder, error);
    return result;
}

}  // namespace
}  // namespace Korvex3Sync::tests

int main(int argc, char** argv) {
    using namespace Korvex3Sync::tests;
    const char* const folder = std::getenv(kFolderVariable);
    if (folder == nullptr) {
        StartInOwnNamespace(argv);
        std::perror("cannot start in a process namespace");
        return EXIT_FAILURE;
    }
    return RunTests(argc, argv, std::string(folder));
}
