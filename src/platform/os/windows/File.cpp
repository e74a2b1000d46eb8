#include "platform/os/File.h"

#include <aclapi.h>

#include <algorithm>
#include <array>

#include "platform/os/Descriptors.h"
#include "platform/os/windows/System.h"
#include "platform/os/windows/UserFolder.h"

namespace Korvex3Sync::os {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kReadAtOnce = 65536;

/// Passes a handle on to the descriptor that owns it from now on.
File OpenedFile(HANDLE handle, std::error_code& error) {
    if (handle == INVALID_HANDLE_VALUE) {
        error = LastError();
        return {};
    }
    const int descriptor = DescriptorFor(Handle(handle));
    if (descriptor < 0) {
        error = std::make_error_code(std::errc::too_many_files_open);
        return {};
    }
    error.clear();
    return File(descriptor);
}

}  // namespace

std::error_code File::Sync() const noexcept {
    return ::FlushFileBuffers(HandleOf(m_descriptor)) != 0 ? std::error_code{} : LastError();
}

std::string ReadWithoutWaiting(const fs::path& path, std::size_t most, std::error_code& error) {
    const File file = OpenedFile(
        ::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr),
        error);
    if (std::error_code none;
        error == std::errc::permission_denied && fs::is_directory(path, none)) {
        error = std::make_error_code(std::errc::is_a_directory);
    }
    std::string bytes;
    std::array<char, kReadAtOnce> part{};
    while (!error && bytes.size() < most) {
        const std::ptrdiff_t count = ReadDescriptor(file.Descriptor(), part.data(),
                                                    std::min(part.size(), most - bytes.size()));
        error = count < 0 ? LastError() : std::error_code{};
        if (count <= 0) {
            break;
        }
        bytes.append(part.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

File CreateNewFile(const fs::path& path, FileAccess access, std::error_code& error) {
    const LocalMemory userOnly = access == FileAccess::UserOnly ? OnlyThisUser() : nullptr;
    SECURITY_ATTRIBUTES attributes = AttributesWith(userOnly);
    return OpenedFile(
        ::CreateFileW(path.c_str(), GENERIC_WRITE | READ_CONTROL | WRITE_DAC, kShareAll,
                      &attributes, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr),
        error);
}

File OpenForAppending(const fs::path& path, std::error_code& error) {
    return OpenedFile(::CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE, kShareAll,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr),
                      error);
}

File OpenStream(const fs::path& path, std::error_code& error) {
    return OpenedFile(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr),
        error);
}

std::error_code CheckStreamAccess(const fs::path& path) {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES ? std::error_code{}
                                                                         : LastError();
}

// This system has no paths of descriptors. Its devices have names in every folder.
bool IsNamedStream(const fs::path& path) {
    constexpr DWORD kLongestPath = 32768;
    std::wstring full(kLongestPath, L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), kLongestPath, full.data(), nullptr));
    return full.starts_with(LR"(\\.\)");
}

void CopyPermissions(const fs::path& replaced, const File& file) noexcept {
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::wstring name = replaced.native();
    if (::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
        return;
    }
    const LocalMemory owned(descriptor);
    ::SetSecurityInfo(HandleOf(file.Descriptor()), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                      nullptr, nullptr, list, nullptr);
}

std::error_code RenameToNew(const fs::path& from, const fs::path& to) noexcept {
    return ::MoveFileExW(from.c_str(), to.c_str(), 0) != 0 ? std::error_code{} : LastError();
}

// The file system keeps a journal of names, and only an administrator may flush a whole disk.
std::error_code SyncFolder(const fs::path& /*folder*/) noexcept {
    return {};
}

std::error_code SyncFileSystem(const fs::path& /*folder*/) noexcept {
    return {};
}

File LockFolder(const fs::path& folder, std::error_code& error) {
    // A file of the user stands for the folder: it is gone with the last handle.
    const Handle opened = Opened(::CreateFileW(folder.empty() ? L"." : folder.c_str(),
                                               FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                               OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION identity{};
    std::string reason;
    const fs::path locks = UserFolder(L"run", reason);
    if (!opened || ::GetFileInformationByHandle(opened.get(), &identity) == 0 || locks.empty()) {
        error = LastError();
        return {};
    }
    if ((identity.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        error = std::make_error_code(std::errc::not_a_directory);
        return {};
    }
    const fs::path lock = locks / ("folder-" + std::to_string(identity.dwVolumeSerialNumber) + "-" +
                                   std::to_string(identity.nFileIndexHigh) + "-" +
                                   std::to_string(identity.nFileIndexLow) + ".lock");
    File file = OpenedFile(::CreateFileW(lock.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                         FILE_FLAG_DELETE_ON_CLOSE, nullptr),
                           error);
    // While the last holder closes it, the file is neither there nor free to be made.
    if (error == std::errc::permission_denied) {
        error = std::make_error_code(std::errc::resource_unavailable_try_again);
    }
    return file;
}

bool MeansNoRoom(const std::error_code& error) {
    return error == std::errc::no_space_on_device || error == std::errc::file_too_large;
}

}  // namespace Korvex3Sync::os
