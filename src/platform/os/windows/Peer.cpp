#include "platform/os/Peer.h"

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::optional<Peer> PeerOf(std::intptr_t socket) {
    // A local socket is a named pipe.
    const auto pipe = reinterpret_cast<HANDLE>(socket);
    DWORD flags = 0;
    ULONG number = 0;
    if (::GetNamedPipeInfo(pipe, &flags, nullptr, nullptr, nullptr) == 0 ||
        ((flags & PIPE_SERVER_END) != 0 ? ::GetNamedPipeClientProcessId(pipe, &number)
                                        : ::GetNamedPipeServerProcessId(pipe, &number)) == 0) {
        return std::nullopt;
    }
    const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number));
    const std::wstring user = process ? UserOf(process.get()) : std::wstring();
    return Peer{static_cast<long>(number), !user.empty() && user == UserOf(::GetCurrentProcess())};
}

}  // namespace Korvex3Sync::os
