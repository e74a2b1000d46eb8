#include "platform/os/InstanceLock.h"

#include <array>
#include <charconv>
#include <string>
#include <utility>

#include "platform/os/Clock.h"
#include "platform/os/Descriptors.h"
#include "platform/os/Process.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

namespace {

/// Behind everything that is read: a locked byte cannot be read by others.
constexpr std::uint64_t kLockedPlace = std::uint64_t{1} << 62;
/// The system knows no question that takes no lock. One that is asked at the same moment must not
/// keep the lock from a process that starts.
constexpr int kLockAttempts = 10;
constexpr std::chrono::milliseconds kBetweenLockAttempts{5};

bool TakeLock(HANDLE file) {
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        if (LockPlace(file, kLockedPlace, true)) {
            return true;
        }
        SleepFor(kBetweenLockAttempts);
    }
    return false;
}

}  // namespace

File TakeInstanceLock(const std::filesystem::path& file, std::error_code& error) {
    const LocalMemory userOnly = OnlyThisUser();
    SECURITY_ATTRIBUTES attributes = AttributesWith(userOnly);
    Handle opened =
        Opened(::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, &attributes,
                             OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!opened) {
        error = LastError();
        return {};
    }
    if (!TakeLock(opened.get())) {
        error = std::make_error_code(std::errc::resource_unavailable_try_again);
        return {};
    }
    if (::SetEndOfFile(opened.get()) == 0) {
        error = LastError();
        return {};
    }
    File lock(DescriptorFor(std::move(opened)));
    error = lock ? lock.Write(std::to_string(CurrentProcess()) + '\n')
                 : std::make_error_code(std::errc::too_many_files_open);
    return error ? File() : std::move(lock);
}

long InstanceLockHolder(const std::filesystem::path& file) {
    const Handle lock = Opened(::CreateFileW(file.c_str(), GENERIC_READ, kShareAll, nullptr,
                                             OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!lock) {
        return 0;
    }
    if (LockPlace(lock.get(), kLockedPlace, false)) {
        UnlockPlace(lock.get(), kLockedPlace);
        return 0;
    }
    constexpr std::size_t kLongestNumber = 20;
    std::array<char, kLongestNumber> text{};
    DWORD size = 0;
    ::ReadFile(lock.get(), text.data(), static_cast<DWORD>(text.size()), &size, nullptr);
    long number = 0;
    std::from_chars(text.data(), text.data() + size, number);
    return number;
}

}  // namespace Korvex3Sync::os
