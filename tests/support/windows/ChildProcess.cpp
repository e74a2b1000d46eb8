#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <map>
#include <thread>
#include <utility>

#include "platform/os/Descriptors.h"
#include "platform/os/InheritedStreams.h"
#include "platform/os/windows/System.h"
#include "support/windows/Signals.h"

// In no header of the system.
extern "C" __declspec(dllimport) LONG NTAPI NtSuspendProcess(HANDLE process);
extern "C" __declspec(dllimport) LONG NTAPI NtResumeProcess(HANDLE process);

namespace Korvex3Sync::tests {

namespace {

using Clock = std::chrono::steady_clock;

/// A pipe has no event that a thread could wait for.
constexpr std::chrono::milliseconds kBetweenLooks{2};
/// What a child that was killed returns.
constexpr UINT kKilled = 0xDEAD;

/// Quoted so that the C runtime of the child reads the same words.
std::wstring CommandLine(const std::vector<std::string>& words) {
    std::wstring line;
    for (const std::string& word : words) {
        line += line.empty() ? L"\"" : L" \"";
        std::size_t backslashes = 0;
        for (const wchar_t letter : os::Wide(word)) {
            if (letter == L'"') {
                line.append(backslashes + 1, L'\\');
            }
            backslashes = letter == L'\\' ? backslashes + 1 : 0;
            line += letter;
        }
        line.append(backslashes, L'\\');
        line += L'"';
    }
    return line;
}

/// The environment of this process with these changes, as the system wants it.
std::wstring EnvironmentBlock(const std::vector<std::pair<std::string, std::string>>& changes) {
    std::map<std::wstring, std::wstring> variables;
    wchar_t* const all = ::GetEnvironmentStringsW();
    for (const wchar_t* entry = all; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
        const std::wstring text = entry;
        // Some names of the system's own begin with the sign.
        const std::size_t sign = text.find(L'=', 1);
        variables[text.substr(0, sign)] = text.substr(sign + 1);
    }
    ::FreeEnvironmentStringsW(all);
    for (const auto& [name, value] : changes) {
        const std::wstring wanted = os::Wide(name);
        std::erase_if(variables, [&](const auto& entry) {
            return ::CompareStringOrdinal(entry.first.c_str(), -1, wanted.c_str(), -1, TRUE) ==
                   CSTR_EQUAL;
        });
        if (!value.empty()) {
            variables[wanted] = os::Wide(value);
        }
    }
    std::wstring block;
    for (const auto& [name, value] : variables) {
        block += name + L'=' + value + L'\0';
    }
    return block + L'\0';
}

/// Appends what is there; closes the descriptor at its end. Whether there was anything.
bool ReadFrom(int& descriptor, std::string& text) {
    DWORD there = 0;
    if (descriptor < 0) {
        return false;
    }
    if (::PeekNamedPipe(os::HandleOf(descriptor), nullptr, 0, nullptr, &there, nullptr) == 0) {
        os::CloseDescriptor(descriptor);
        descriptor = -1;
        return true;
    }
    std::string part(there, '\0');
    if (there > 0) {
        const std::ptrdiff_t got = os::ReadDescriptor(descriptor, part.data(), part.size());
        // The C runtime puts one at the end of each line.
        part.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
        std::erase(part, '\r');
        text += part;
    }
    return there > 0;
}

/// The write end of a pipe as a handle that the child inherits.
HANDLE Inherited(int descriptor) {
    const HANDLE handle = os::HandleOf(descriptor);
    ::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, ChildOptions options)
    : m_options(std::move(options)), m_end(Clock::now() + m_options.deadline) {
    std::array<int, 2> output{-1, -1};
    std::array<int, 2> error{-1, -1};
    if (!os::MakePipe(output) || !os::MakePipe(error)) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    m_output = output[0];
    m_error = error[0];
    if (m_options.outputUnread) {
        os::CloseDescriptor(std::exchange(m_output, -1));
    }
    EXPECT_FALSE(m_options.fileSizeLimit) << "this system has no such limit";
    os::Handle file;
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    start.hStdError = Inherited(error[1]);
    start.hStdOutput = Inherited(output[1]);
    if (!m_options.outputFile.empty()) {
        file = os::Opened(::CreateFileW(os::Wide(m_options.outputFile).c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        0, nullptr));
        ::SetHandleInformation(file.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        start.hStdOutput = file.get();
    }
    std::wstring line = CommandLine(command);
    std::wstring environment = EnvironmentBlock(m_options.environment);
    PROCESS_INFORMATION child{};
    os::InheritedStreams streams;
    const BOOL started = ::CreateProcessW(
        nullptr, line.data(), nullptr, nullptr, TRUE,
        CREATE_UNICODE_ENVIRONMENT | os::InheritedStreams::Flag(), environment.data(), nullptr,
        static_cast<STARTUPINFOW*>(streams.Extended(&start)), &child);
    EXPECT_NE(started, 0) << command.front() << ": " << os::LastError().message();
    os::CloseDescriptor(output[1]);
    os::CloseDescriptor(error[1]);
    if (started != 0) {
        ::CloseHandle(child.hThread);
        m_pid = static_cast<long>(child.dwProcessId);
        m_process = reinterpret_cast<std::intptr_t>(child.hProcess);
    }
}

ChildProcess::~ChildProcess() {
    if (m_pid > 0) {
        ::TerminateProcess(reinterpret_cast<HANDLE>(m_process), kKilled);
        Reap();
    }
    os::CloseDescriptor(m_output);
    os::CloseDescriptor(m_error);
}

void ChildProcess::Signal(int signal) const {
    SendConsoleEvent(reinterpret_cast<HANDLE>(m_process), signal);
}

void ChildProcess::Kill() const {
    ASSERT_NE(::TerminateProcess(reinterpret_cast<HANDLE>(m_process), kKilled), 0);
}

void ChildProcess::Stop() const {
    ASSERT_EQ(::NtSuspendProcess(reinterpret_cast<HANDLE>(m_process)), 0);
}

void ChildProcess::Continue() const {
    ASSERT_EQ(::NtResumeProcess(reinterpret_cast<HANDLE>(m_process)), 0);
}

// Stop returns when it has.
bool ChildProcess::IsStopped() const {
    return true;
}

bool ChildProcess::ReadSome() {
    while (true) {
        if ((m_output < 0 && m_error < 0) || Clock::now() >= m_end) {
            return false;
        }
        const bool output = ReadFrom(m_output, m_result.output);
        const bool error = ReadFrom(m_error, m_result.error);
        if (output || error) {
            return true;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

ChildResult ChildProcess::Wait() {
    while (ReadSome()) {
    }
    if (m_output >= 0 || m_error >= 0) {
        ADD_FAILURE() << "the child did not end in time; it said: " << m_result.error;
        ::TerminateProcess(reinterpret_cast<HANDLE>(m_process), kKilled);
    }
    Reap();
    return m_result;
}

void ChildProcess::Reap() {
    const os::Handle process(reinterpret_cast<HANDLE>(m_process));
    if (!process) {
        return;  // it was not started
    }
    DWORD code = 0;
    ::WaitForSingleObject(process.get(), INFINITE);
    ::GetExitCodeProcess(process.get(), &code);
    m_pid = -1;
    m_process = 0;
    if (code == kKilled) {
        m_result.signal = 1;
    } else {
        m_result.exitCode = static_cast<int>(code);
    }
}

}  // namespace Korvex3Sync::tests
