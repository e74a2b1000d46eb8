#include "korvexctl/FileCalls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace Korvex3Sync::tests {

namespace {

std::atomic<FileCalls*> s_current{nullptr};

std::string NameOf(int descriptor) {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error)
        .filename()
        .string();
}

std::string Renaming(const char* call, const char* from, const char* to) {
    return std::string(call) + ' ' + std::filesystem::path(from).filename().string() + " -> " +
           std::filesystem::path(to).filename().string();
}

/// Asks the recorder, then the system.
template <class Description, class... Arguments>
int Call(Description description, long number, Arguments... arguments) {
    if (FileCalls* const calls = s_current) {
        if (const int refused = calls->Meet(description())) {
            errno = refused;
            return -1;
        }
    }
    return static_cast<int>(::syscall(number, arguments...));
}

}  // namespace

FileCalls::FileCalls(Before before) : m_before(std::move(before)) {
    s_current = this;
}

FileCalls::~FileCalls() {
    s_current = nullptr;
}

int FileCalls::Meet(const std::string& call) {
    m_seen.push_back(call);
    return m_before ? m_before(call) : 0;
}

// In the place of the system's own, for the whole test program and the libraries that it loads.
#pragma GCC visibility push(default)

extern "C" int fsync(int descriptor) {
    return Call([=] { return "fsync " + NameOf(descriptor); }, SYS_fsync, descriptor);
}

extern "C" int syncfs(int descriptor) noexcept {
    return Call([=] { return "syncfs " + NameOf(descriptor); }, SYS_syncfs, descriptor);
}

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
    return Call(
        [=] {
            const bool keepsOwner = owner == static_cast<uid_t>(-1);
            return "fchown " + NameOf(descriptor) + ' ' +
                   (keepsOwner ? "-" : std::to_string(owner)) + ' ' + std::to_string(group);
        },
        SYS_fchown, descriptor, owner, group);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    return Call([=] { return Renaming("rename", from, to); }, SYS_renameat2, AT_FDCWD, from,
                AT_FDCWD, to, 0U);
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned int flags) noexcept {
    return Call([=] { return Renaming("renameat2", from, to); }, SYS_renameat2, fromFolder, from,
                toFolder, to, flags);
}

extern "C" int link(const char* from, const char* to) noexcept {
    return Call([=] { return Renaming("link", from, to); }, SYS_linkat, AT_FDCWD, from, AT_FDCWD,
                to, 0);
}

#pragma GCC visibility pop

}  // namespace Korvex3Sync::tests
