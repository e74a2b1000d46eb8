#include "platform/os/windows/System.h"

#include <fcntl.h>
#include <io.h>
#include <sddl.h>

#include <cstddef>
#include <vector>

namespace Korvex3Sync::os {

Handle Opened(HANDLE handle) {
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

HANDLE HandleOf(int descriptor) {
    return descriptor < 0 ? INVALID_HANDLE_VALUE
                          : reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

int DescriptorFor(Handle file) {
    const int descriptor = file ? ::_open_osfhandle(reinterpret_cast<std::intptr_t>(file.get()),
                                                    _O_BINARY | _O_NOINHERIT)
                                : -1;
    if (descriptor >= 0) {
        static_cast<void>(file.release());
    }
    return descriptor;
}

std::wstring Wide(std::string_view text) {
    const auto size = static_cast<int>(text.size());
    const int count = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(count), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), count);
    return wide;
}

std::string Narrow(std::wstring_view text) {
    const auto size = static_cast<int>(text.size());
    const int count =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(count), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), count, nullptr, nullptr);
    return narrow;
}

std::error_code SystemError(DWORD code) {
    switch (code) {
        case ERROR_SUCCESS:
            return {};
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return std::make_error_code(std::errc::resource_unavailable_try_again);
        case ERROR_NO_DATA:
        case ERROR_BROKEN_PIPE:
        case ERROR_PIPE_NOT_CONNECTED:
            return std::make_error_code(std::errc::broken_pipe);
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case ERROR_COMMITMENT_LIMIT:
            return std::make_error_code(std::errc::no_space_on_device);
        default:
            break;
    }
    const std::error_code error(static_cast<int>(code), std::system_category());
    const std::error_condition condition = error.default_error_condition();
    return condition.category() == std::generic_category()
               ? std::error_code(condition.value(), std::generic_category())
               : error;
}

std::wstring UserOf(HANDLE process) {
    HANDLE opened = nullptr;
    if (::OpenProcessToken(process, TOKEN_QUERY, &opened) == 0) {
        return {};
    }
    const Handle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::max_align_t> memory(size / sizeof(std::max_align_t) + 1);
    wchar_t* text = nullptr;
    if (::GetTokenInformation(token.get(), TokenUser, memory.data(), size, &size) == 0 ||
        ::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(memory.data())->User.Sid, &text) ==
            0) {
        return {};
    }
    const LocalMemory owned(text);
    return text;
}

LocalMemory OnlyThisUser() {
    // Protected: nothing is inherited from a folder. All rights for this user, also to what is made
    // inside; none for others.
    const std::wstring text = L"D:P(A;OICI;GA;;;" + UserOf(::GetCurrentProcess()) + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                           &descriptor, nullptr);
    return LocalMemory(descriptor);
}

bool LockPlace(HANDLE file, std::uint64_t place, bool alone) {
    OVERLAPPED at = Place(place);
    const DWORD how = LOCKFILE_FAIL_IMMEDIATELY | (alone ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    return ::LockFileEx(file, how, 0, 1, 0, &at) != 0;
}

void UnlockPlace(HANDLE file, std::uint64_t place) {
    OVERLAPPED at = Place(place);
    ::UnlockFileEx(file, 0, 1, 0, &at);
}

}  // namespace Korvex3Sync::os
