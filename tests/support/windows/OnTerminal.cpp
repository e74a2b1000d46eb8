// Runs a command on a console of its own and prints what is shown there: on_terminal COMMAND...
//
// The program starts itself once more on that console, because only there the console can be opened
// for the command.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/os/windows/System.h"

namespace Korvex3Sync::tests {
namespace {

constexpr wchar_t kOnConsole[] = L"KORVEX_ON_CONSOLE";
/// Added to the exit code by the program on the console.
constexpr DWORD kWithoutEscapes = 0x1000;
constexpr COORD kSize{120, 30};

/// The command line without its first word.
std::wstring Command() {
    const std::wstring line = ::GetCommandLineW();
    const bool quoted = line.front() == L'"';
    return line.substr(line.find_first_not_of(L' ', line.find(quoted ? L'"' : L' ', 1) + 1));
}

DWORD ExitCodeOf(const PROCESS_INFORMATION& child) {
    const os::Handle process(child.hProcess);
    const os::Handle thread(child.hThread);
    DWORD code = EXIT_FAILURE;
    ::WaitForSingleObject(process.get(), INFINITE);
    ::GetExitCodeProcess(process.get(), &code);
    return code;
}

/// Runs the command with the console as its standard streams.
DWORD RunOnConsole() {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const auto open = [&](const wchar_t* name) {
        return os::Opened(::CreateFileW(name, GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                        OPEN_EXISTING, 0, nullptr));
    };
    const os::Handle input = open(L"CONIN$");
    const os::Handle output = open(L"CONOUT$");
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.get();
    start.hStdOutput = output.get();
    start.hStdError = output.get();
    PROCESS_INFORMATION child{};
    std::wstring line = Command();
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                         &child) == 0) {
        return EXIT_FAILURE;
    }
    const DWORD code = ExitCodeOf(child);
    DWORD mode = 0;
    ::GetConsoleMode(output.get(), &mode);
    return code | ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 ? 0 : kWithoutEscapes);
}

/// Starts this program again on a console.
bool StartAgain(HPCON console, PROCESS_INFORMATION& child) {
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<char> attributes(size);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof(start);
    start.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes.data());
    std::wstring line = ::GetCommandLineW();
    return ::InitializeProcThreadAttributeList(start.lpAttributeList, 1, 0, &size) != 0 &&
           ::UpdateProcThreadAttribute(start.lpAttributeList, 0,
                                       PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, console,
                                       sizeof(console), nullptr, nullptr) != 0 &&
           ::SetEnvironmentVariableW(kOnConsole, L"1") != 0 &&
           ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE,
                            EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &start.StartupInfo,
                            &child) != 0;
}

void PrintAll(HANDLE shown) {
    std::array<char, 4096> part{};
    DWORD count = 0;
    while (::ReadFile(shown, part.data(), part.size(), &count, nullptr) != 0 && count > 0) {
        std::fwrite(part.data(), 1, count, stdout);
    }
    std::fflush(stdout);
}

int RunWithConsole() {
    std::array<HANDLE, 2> typed{};
    std::array<HANDLE, 2> shown{};
    HPCON console = nullptr;
    PROCESS_INFORMATION child{};
    if (::CreatePipe(&typed[0], &typed[1], nullptr, 0) == 0 ||
        ::CreatePipe(&shown[0], &shown[1], nullptr, 0) == 0 ||
        ::CreatePseudoConsole(kSize, typed[0], shown[1], 0, &console) != S_OK ||
        !StartAgain(console, child)) {
        std::fprintf(stderr, "cannot make a console: %s\n",
                     os::SystemError(::GetLastError()).message().c_str());
        return EXIT_FAILURE;
    }
    // The console has its own handles.
    ::CloseHandle(typed[0]);
    ::CloseHandle(shown[1]);
    std::thread printing([&shown] { PrintAll(shown[0]); });
    const DWORD code = ExitCodeOf(child);
    ::ClosePseudoConsole(console);
    printing.join();
    if ((code & kWithoutEscapes) != 0) {
        std::fprintf(stderr, "the console would show escape sequences as characters\n");
    }
    return static_cast<int>(code & ~kWithoutEscapes);
}

}  // namespace
}  // namespace Korvex3Sync::tests

int main() {
    using namespace Korvex3Sync::tests;
    return ::GetEnvironmentVariableW(kOnConsole, nullptr, 0) > 0 ? static_cast<int>(RunOnConsole())
                                                                 : RunWithConsole();
}
