#include "support/ProcessNamespace.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/os/windows/System.h"
#include "support/Environment.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

/// Set in the second process.
constexpr char kFolderVariable[] = "KORVEX_NAMESPACE_FOLDER";

fs::path ThisProgram() {
    constexpr DWORD kLongestPath = 32768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), kLongestPath));
    return path;
}

/// A job whose processes all end when its last handle is closed, also when this process is killed.
os::Handle EndingJob() {
    os::Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                              sizeof(limits));
    return job;
}

/// Starts a program with the arguments of this one and returns its exit code.
int RunInJob(const fs::path& program) {
    const os::Handle job = EndingJob();
    // The first word of the command line is not read: the program is given.
    std::wstring line = ::GetCommandLineW();
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION child{};
    if (::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                         nullptr, nullptr, &start, &child) == 0) {
        std::fprintf(stderr, "cannot start the program once more\n");
        return EXIT_FAILURE;
    }
    const os::Handle process(child.hProcess);
    const os::Handle thread(child.hThread);
    ::AssignProcessToJobObject(job.get(), process.get());
    ::ResumeThread(thread.get());
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD code = EXIT_FAILURE;
    ::GetExitCodeProcess(process.get(), &code);
    return static_cast<int>(code);
}

}  // namespace

// The system has no process namespaces: a process of the same name that a test does not start would
// be ended too.
int RunInProcessNamespace(int argc, char** argv, int (*run)(int argc, char** argv)) {
    if (std::getenv(kFolderVariable) != nullptr) {
        RemoveVariable(kFolderVariable);
        return run(argc, argv);
    }
    const fs::path folder = NewFolder("korvex-names-");
    // Of another name, so that a test that ends all programs of its own name does not end this one.
    const fs::path program = folder / ("own-" + ThisProgram().filename().string());
    fs::copy_file(ThisProgram(), program);
    SetVariable(kFolderVariable, folder.string());
    const int result = RunInJob(program);
    RemoveFolder(folder);
    return result;
}

}  // namespace Korvex3Sync::tests
