#pragma once

// Before windows.h: it would redefine min and max, and bring in far more than this folder uses.
#define NOMINMAX 1  // as the standard library does
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace Korvex3Sync::os {

struct HandleCloser {
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// An open handle, or null.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Others may read, write, rename and delete what is open, as on other systems.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Takes ownership of what CreateFile returns.
Handle Opened(HANDLE handle);

/// The file of a descriptor, which keeps it; INVALID_HANDLE_VALUE for -1.
HANDLE HandleOf(int descriptor);
/// Gives a file a descriptor, which owns it; -1 on an error, or for a null handle.
int DescriptorFor(Handle file);

struct LocalMemoryFreer {
    void operator()(void* memory) const { ::LocalFree(memory); }
};
using LocalMemory = std::unique_ptr<void, LocalMemoryFreer>;

/// A text as the system's functions want it, and back. Invalid UTF-8 becomes replacement
/// characters.
std::wstring Wide(std::string_view text);
std::string Narrow(std::wstring_view text);

/// The system's code of the last failed call as an error; see LastError in Descriptors.h.
std::error_code SystemError(DWORD code);

/// The security identifier of the user of a process, as text; empty if the system does not tell.
std::wstring UserOf(HANDLE process);

/// Lets only the user of this process in. The memory is null if the system refuses.
LocalMemory OnlyThisUser();

/// The attributes of a new object with this descriptor.
inline SECURITY_ATTRIBUTES AttributesWith(const LocalMemory& descriptor) {
    return {sizeof(SECURITY_ATTRIBUTES), descriptor.get(), FALSE};
}

/// The two halves of a place in a file, as locks take them.
inline OVERLAPPED Place(std::uint64_t offset) {
    OVERLAPPED place{};
    constexpr int kHalf = 32;
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> kHalf);
    return place;
}

/// Locks the byte at a place without waiting.
bool LockPlace(HANDLE file, std::uint64_t place, bool alone);
void UnlockPlace(HANDLE file, std::uint64_t place);

}  // namespace Korvex3Sync::os
