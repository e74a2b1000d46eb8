#include "link/RawSocket.h"

#include <chrono>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/os/windows/System.h"
#include "support/Deadline.h"

namespace Korvex3Sync::tests {

namespace {

using PipeClock = std::chrono::steady_clock;

constexpr DWORD kPipeBytes = 65536;
constexpr std::chrono::milliseconds kBetweenAttempts{2};

HANDLE PipeOf(std::intptr_t reference) {
    return reinterpret_cast<HANDLE>(reference);
}

std::intptr_t Reference(HANDLE pipe) {
    return reinterpret_cast<std::intptr_t>(pipe);
}

DWORD DeadlineMs() {
    return static_cast<DWORD>(
        std::chrono::duration_cast<std::chrono::milliseconds>(kDeadline).count());
}

/// An operation that goes on while this thread waits for it.
class Overlapped {
public:
    Overlapped() : m_event(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        m_overlapped.hEvent = m_event.get();
    }
    OVERLAPPED* Get() { return &m_overlapped; }
    /// The number of bytes once it has ended; nothing at an error, and at the deadline.
    std::optional<DWORD> Bytes(HANDLE pipe, BOOL begun) {
        if (begun == 0 && ::GetLastError() != ERROR_IO_PENDING) {
            return std::nullopt;
        }
        deadline = ::WaitForSingleObject(m_event.get(), DeadlineMs()) != WAIT_OBJECT_0;
        if (deadline) {
            ::CancelIoEx(pipe, Get());
        }
        DWORD count = 0;
        const BOOL ended = ::GetOverlappedResult(pipe, Get(), &count, TRUE);
        return ended != 0 ? std::optional(count) : std::nullopt;
    }

    bool deadline = false;

private:
    os::Handle m_event;
    OVERLAPPED m_overlapped{};
};

/// A further end of a pipe that others can connect to.
HANDLE NewEnd(const std::wstring& name) {
    return ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                              PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT,
                              PIPE_UNLIMITED_INSTANCES, kPipeBytes, kPipeBytes, 0, nullptr);
}

/// The bytes that were read, none at the end of the connection; nothing at the deadline.
std::optional<QByteArray> ReadSome(HANDLE pipe) {
    QByteArray bytes(kPipeBytes, 0);
    Overlapped reading;
    const BOOL begun =
        ::ReadFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, reading.Get());
    bytes.truncate(static_cast<int>(reading.Bytes(pipe, begun).value_or(0)));
    return reading.deadline ? std::nullopt : std::optional(bytes);
}

}  // namespace

RawSocket::RawSocket() : RawSocket(0) {}

RawSocket::RawSocket(std::intptr_t reference) : m_reference(reference) {}

RawSocket::RawSocket(RawSocket&& other) noexcept
    : m_reference(std::exchange(other.m_reference, 0)) {}

RawSocket::~RawSocket() {
    EndSending();
}

bool RawSocket::TryConnectTo(const std::string& path) {
    const PipeClock::time_point end = PipeClock::now() + kDeadline;
    while (true) {
        const HANDLE pipe = ::CreateFileW(os::Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                          nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
        if (pipe != INVALID_HANDLE_VALUE) {
            m_reference = Reference(pipe);
            return true;
        }
        // All ends that the server has made are taken, until it makes the next one.
        if (::GetLastError() != ERROR_PIPE_BUSY || PipeClock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(kBetweenAttempts);
    }
}

RawSocket RawSocket::Listening(const std::string& path) {
    const HANDLE pipe = NewEnd(os::Wide(path));
    EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
    return RawSocket(Reference(pipe));
}

RawSocket RawSocket::Accept() const {
    const HANDLE pipe = PipeOf(m_reference);
    // A client may have connected before.
    if (Overlapped connecting; ::ConnectNamedPipe(pipe, connecting.Get()) == 0 &&
                               ::GetLastError() != ERROR_PIPE_CONNECTED) {
        EXPECT_TRUE(connecting.Bytes(pipe, FALSE)) << "nobody connects";
    }
    struct {
        DWORD bytes;
        wchar_t text[MAX_PATH];
    } information{};
    EXPECT_NE(::GetFileInformationByHandleEx(pipe, FileNameInfo, &information, sizeof(information)),
              0);
    const std::wstring_view end(information.text, information.bytes / sizeof(wchar_t));
    m_reference = Reference(NewEnd(LR"(\\.\pipe)" + std::wstring(end)));
    return RawSocket(Reference(pipe));
}

bool RawSocket::Send(const QByteArray& bytes) const {
    Overlapped writing;
    const BOOL begun = ::WriteFile(PipeOf(m_reference), bytes.constData(),
                                   static_cast<DWORD>(bytes.size()), nullptr, writing.Get());
    const std::optional<DWORD> sent = writing.Bytes(PipeOf(m_reference), begun);
    EXPECT_FALSE(writing.deadline) << "deadline";
    return sent == static_cast<DWORD>(bytes.size());
}

// A pipe ends in both directions at the same time. What was written can still be read.
void RawSocket::EndSending() const {
    if (m_reference != 0) {
        ::CloseHandle(PipeOf(std::exchange(m_reference, 0)));
    }
}

QByteArray RawSocket::ReceiveSome() const {
    const std::optional<QByteArray> bytes = ReadSome(PipeOf(m_reference));
    EXPECT_TRUE(bytes) << "deadline";
    return bytes.value_or(QByteArray());
}

bool RawSocket::WaitUntilClosed() const {
    while (m_reference != 0) {
        const std::optional<QByteArray> bytes = ReadSome(PipeOf(m_reference));
        if (!bytes || bytes->isEmpty()) {
            return bytes.has_value();
        }
    }
    return true;
}

}  // namespace Korvex3Sync::tests
