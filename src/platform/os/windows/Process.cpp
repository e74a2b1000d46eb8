#include "platform/os/Process.h"

#include "platform/os/windows/System.h"

#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Descriptors.h"

// In no header of the system.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace Korvex3Sync::os {

namespace {

constexpr std::array<int, 3> kStandardDescriptors{0, 1, 2};

/// Waits for processes that were killed; longer only if the system cannot end one.
constexpr std::chrono::milliseconds kEndLimit{5000};

HANDLE HandleOf(std::intptr_t reference) {
    return reinterpret_cast<HANDLE>(reference);
}

/// File names are the same in upper and lower case.
bool SameName(const std::wstring& one, const std::wstring& other) {
    return ::CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

}  // namespace

long CurrentProcess() {
    return static_cast<long>(::GetCurrentProcessId());
}

bool OtherThreadsAreGone() {
    return ::RtlDllShutdownInProgress() != FALSE;
}

void BecomeBackgroundProcess() {
    std::fflush(stdout);
    const int nothing = OpenNothing();
    for (const int standard : kStandardDescriptors) {
        RedirectDescriptor(nothing, standard);
    }
    if (nothing > kStandardDescriptors.back()) {
        CloseDescriptor(nothing);
    }
    ::FreeConsole();
}

OtherProcess::OtherProcess(long number)
    : m_number(number),
      m_reference(number <= 0
                      ? 0
                      : reinterpret_cast<std::intptr_t>(::OpenProcess(
                            PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE | SYNCHRONIZE,
                            FALSE, static_cast<DWORD>(number)))) {}

OtherProcess::~OtherProcess() {
    if (m_reference != 0) {
        ::CloseHandle(HandleOf(m_reference));
    }
}

bool OtherProcess::Runs() const {
    return m_reference != 0 && !WaitForEnd(std::chrono::milliseconds(0));
}

bool OtherProcess::Is(const std::string& program) const {
    constexpr DWORD kLongestPath = 32768;
    std::wstring file(kLongestPath, L'\0');
    DWORD size = kLongestPath;
    if (m_reference == 0 ||
        ::QueryFullProcessImageNameW(HandleOf(m_reference), 0, file.data(), &size) == 0) {
        return false;
    }
    file.resize(size);
    const std::wstring user = UserOf(HandleOf(m_reference));
    return SameName(std::filesystem::path(file).filename().native(), Wide(program)) &&
           !user.empty() && user == UserOf(::GetCurrentProcess()) && Runs();
}

bool OtherProcess::WaitForEnd(std::chrono::milliseconds nominalLimit) const {
    return m_reference == 0 ||
           ::WaitForSingleObject(HandleOf(m_reference),
                                 static_cast<DWORD>(ScaledMilliseconds(nominalLimit))) ==
               WAIT_OBJECT_0;
}

bool OtherProcess::Kill() const {
    return Runs() && ::TerminateProcess(HandleOf(m_reference), EXIT_FAILURE) != 0;
}

void EndProcesses(const std::string& program) {
    const std::wstring name = Wide(program);
    std::vector<std::unique_ptr<OtherProcess>> killed;
    const Handle all = Opened(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = all ? ::Process32FirstW(all.get(), &entry) : FALSE; more != 0;
         more = ::Process32NextW(all.get(), &entry)) {
        const auto number = static_cast<long>(entry.th32ProcessID);
        if (number == CurrentProcess() || !SameName(entry.szExeFile, name)) {
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
