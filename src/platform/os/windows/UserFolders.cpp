#include "platform/os/UserFolders.h"

#include "platform/os/FileName.h"
#include "platform/os/windows/System.h"

#include <aclapi.h>
#include <sddl.h>
#include <shlobj.h>

#include <cstdint>
#include <system_error>

#include "platform/os/Descriptors.h"
#include "platform/os/windows/UserFolder.h"

namespace Korvex3Sync::os {
namespace {

/// `%LOCALAPPDATA%`, or where the system has it; a relative path counts as not set.
std::filesystem::path LocalFolder() {
    constexpr DWORD kLongestPath = 32768;
    std::wstring value(kLongestPath, L'\0');
    value.resize(::GetEnvironmentVariableW(L"LOCALAPPDATA", value.data(), kLongestPath));
    std::filesystem::path folder = value;
    if (folder.is_absolute()) {
        return folder;
    }
    wchar_t* known = nullptr;
    if (::SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &known) == S_OK) {
        folder = known;
    }
    ::CoTaskMemFree(known);
    return folder;
}

/// A short name for a path: all pipes of a machine share one list of names.
std::string NameFor(const std::filesystem::path& path) {
    std::uint64_t sum = 0xCBF2'9CE4'8422'2325;
    for (const wchar_t letter : path.native()) {
        sum = (sum ^ static_cast<std::uint64_t>(letter)) * 0x0000'0100'0000'01B3;
    }
    return std::to_string(sum);
}

}  // namespace

std::filesystem::path UserFolder(const wchar_t* name, std::string& reason) {
    const std::filesystem::path parent = LocalFolder() / L"korvex3sync";
    std::filesystem::path folder = parent / name;
    const LocalMemory userOnly = OnlyThisUser();
    SECURITY_ATTRIBUTES attributes = AttributesWith(userOnly);
    for (const std::filesystem::path& each : {parent, folder}) {
        if (::CreateDirectoryW(each.c_str(), &attributes) == 0 &&
            ::GetLastError() != ERROR_ALREADY_EXISTS) {
            reason = "cannot create " + TextOf(each) + ": " + LastError().message();
            return {};
        }
    }
    const DWORD kind = ::GetFileAttributesW(folder.c_str());
    if (kind == INVALID_FILE_ATTRIBUTES || (kind & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        reason = "cannot use " + TextOf(folder) + ": it is not a folder";
        return {};
    }
    if ((kind & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        reason = "cannot use " + TextOf(folder) + ": it is a link";
        return {};
    }
    return folder;
}

std::filesystem::path RuntimeFolder(std::string& reason) {
    return UserFolder(L"run", reason);
}

std::filesystem::path SocketPath(std::string_view name, std::string& reason) {
    const std::filesystem::path folder = RuntimeFolder(reason);
    if (folder.empty()) {
        return {};
    }
    return R"(\\.\pipe\korvex3sync-)" + NameFor(folder) + "-" + std::string(name);
}

// A pipe has its name as long as its server listens.
bool SocketInPlace(const std::filesystem::path& /*path*/) {
    return true;
}

std::filesystem::path LogFolder(std::string& reason) {
    return UserFolder(L"log", reason);
}

}  // namespace Korvex3Sync::os
