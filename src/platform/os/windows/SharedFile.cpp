#include "platform/os/SharedFile.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <utility>

#include "platform/os/Clock.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Descriptors.h"
#include "platform/os/windows/System.h"
#include "platform/os/windows/UserFolder.h"

// The memory is a section, which vanishes with its last user. A section can neither pass its name
// on nor be locked, and the system lists no sections. So each has a small file beside it, which is
// never mapped and ends with the process that created it. It says what the section is called, which
// name the shared file has, and it takes the locks.

namespace Korvex3Sync::os {

namespace fs = std::filesystem;

namespace {

enum class Naming : std::uint64_t { None, Named, Dropped };

constexpr std::size_t kLongestName = 160;
constexpr std::size_t kTokenLength = 16;

/// The contents of the file.
struct Label {
    Naming naming = Naming::None;
    std::uint64_t size = 0;
    std::array<char, kTokenLength> token{};
    std::array<char, kLongestName> name{};

    bool Has(const std::string& wanted) const {
        return naming == Naming::Named && wanted == std::string(name.data());
    }
};

constexpr DWORD kAllAccess = GENERIC_READ | GENERIC_WRITE | DELETE;
constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kBetweenAttempts{1};
constexpr const wchar_t* kExtension = L".area";

bool ReadLabel(HANDLE file, Label& label) {
    OVERLAPPED start = Place(0);
    DWORD count = 0;
    return ::ReadFile(file, &label, sizeof(label), &count, &start) != 0 && count == sizeof(label) &&
           label.name.back() == '\0';
}

bool WriteLabel(HANDLE file, const Label& label) {
    OVERLAPPED start = Place(0);
    DWORD count = 0;
    return ::WriteFile(file, &label, sizeof(label), &count, &start) != 0;
}

/// From now on nobody finds the file by its name, and it goes when the last one closes it.
void Drop(HANDLE file, Label label) {
    label.naming = Naming::Dropped;
    WriteLabel(file, label);
    FILE_DISPOSITION_INFO gone{TRUE};
    ::SetFileInformationByHandle(file, FileDispositionInfo, &gone, sizeof(gone));
}

fs::path SharedFolder() {
    std::string reason;
    return UserFolder(L"shared", reason);
}

/// Random letters, for a name that nobody else has.
std::array<char, kTokenLength> NewToken() {
    std::random_device random;
    std::uniform_int_distribution<int> letter('a', 'p');
    std::array<char, kTokenLength> token{};
    std::ranges::generate(token, [&] { return static_cast<char>(letter(random)); });
    return token;
}

std::wstring SectionName(const Label& label) {
    return L"Local\\korvex3sync-" + Wide({label.token.data(), label.token.size()});
}

/// Calls `look` with each file until it returns true.
void EachFile(const std::function<bool(Handle& file, const Label& label)>& look) {
    std::error_code error;
    for (fs::directory_iterator entry(SharedFolder(), error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() != kExtension) {
            continue;
        }
        Handle file = Opened(::CreateFileW(entry->path().c_str(), kAllAccess, kShareAll, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
        Label label;
        if (file && ReadLabel(file.get(), label) && look(file, label)) {
            return;
        }
    }
}

/// Lets one process at a time change names. The system releases it when the process ends.
Handle LockNames() {
    constexpr std::uint64_t kPlace = 1;
    Handle file =
        Opened(::CreateFileW((SharedFolder() / L"names.lock").c_str(), GENERIC_READ | GENERIC_WRITE,
                             kShareAll, nullptr, OPEN_ALWAYS, 0, nullptr));
    OVERLAPPED place = Place(kPlace);
    if (file) {
        ::LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place);
    }
    return file;
}

}  // namespace

struct SharedFile::Memory {
    Handle section;
    Mutex mutex;
    /// The places that this object has locked: the system does not tell its locks from those of
    /// others.
    std::set<std::uint64_t> locked KORVEX_GUARDED_BY(mutex);
};

SharedMapping::~SharedMapping() {
    if (!m_bytes.empty()) {
        ::UnmapViewOfFile(m_bytes.data());
    }
}

SharedMapping::SharedMapping(SharedMapping&& other) noexcept
    : m_bytes(std::exchange(other.m_bytes, {})) {}

SharedMapping& SharedMapping::operator=(SharedMapping&& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

SharedFile SharedFile::Create(std::uint64_t size, std::error_code& error) {
    Label label;
    label.size = size;
    label.token = NewToken();
    fs::path path = SharedFolder() / std::string(label.token.data(), label.token.size());
    path += kExtension;
    const LocalMemory userOnly = OnlyThisUser();
    SECURITY_ATTRIBUTES attributes = AttributesWith(userOnly);
    Handle file =
        Opened(::CreateFileW(path.c_str(), kAllAccess, kShareAll, &attributes, CREATE_NEW,
                             FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file || !WriteLabel(file.get(), label)) {
        error = LastError();
        return {};
    }
    constexpr int kHalf = 32;
    // Without memory yet: each part gets it in Reserve.
    const HANDLE section = ::CreateFileMappingW(
        INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE | SEC_RESERVE,
        static_cast<DWORD>(size >> kHalf), static_cast<DWORD>(size), SectionName(label).c_str());
    const DWORD failure = ::GetLastError();
    if (section == nullptr || failure == ERROR_ALREADY_EXISTS) {
        error = SystemError(failure);
        if (section != nullptr) {
            ::CloseHandle(section);
        }
        return {};
    }
    SharedFile created(-1, true);
    created.m_memory = std::make_shared<Memory>();
    created.m_memory->section.reset(section);
    created.m_file = File(DescriptorFor(std::move(file)));
    error = created ? std::error_code{} : std::make_error_code(std::errc::too_many_files_open);
    return created;
}

SharedFile SharedFile::Open(const std::string& name, std::error_code& error) {
    SharedFile opened;
    error = std::make_error_code(std::errc::no_such_file_or_directory);
    EachFile([&](Handle& file, const Label& label) {
        if (!label.Has(name)) {
            return false;
        }
        // Without a section, its creator has ended and nobody uses it: what is left is a name.
        const HANDLE section = ::OpenFileMappingW(FILE_MAP_READ, FALSE, SectionName(label).c_str());
        opened.m_memory = std::make_shared<Memory>();
        opened.m_memory->section.reset(section);
        opened.m_file = File(DescriptorFor(std::move(file)));
        error.clear();
        return true;
    });
    return opened;
}

std::error_code SharedFile::Reserve(std::uint64_t offset, std::uint64_t size) const {
    SYSTEM_INFO system{};
    ::GetSystemInfo(&system);
    const std::uint64_t before = offset % system.dwAllocationGranularity;
    const OVERLAPPED start = Place(offset - before);
    void* const view = ::MapViewOfFile(m_memory->section.get(), FILE_MAP_WRITE, start.OffsetHigh,
                                       start.Offset, static_cast<SIZE_T>(before + size));
    if (view == nullptr) {
        return LastError();
    }
    const bool done =
        ::VirtualAlloc(static_cast<std::byte*>(view) + before, static_cast<SIZE_T>(size),
                       MEM_COMMIT, PAGE_READWRITE) != nullptr;
    const std::error_code error = done ? std::error_code{} : LastError();
    ::UnmapViewOfFile(view);
    return error;
}

SharedMapping SharedFile::Map(std::size_t size, std::error_code& error) const {
    if (size == 0) {
        error = std::make_error_code(std::errc::invalid_argument);
        return {};
    }
    void* const start = ::MapViewOfFile(m_memory->section.get(),
                                        m_created ? FILE_MAP_WRITE : FILE_MAP_READ, 0, 0, size);
    error = start != nullptr ? std::error_code{} : LastError();
    return start != nullptr ? SharedMapping({static_cast<std::byte*>(start), size})
                            : SharedMapping();
}

std::error_code SharedFile::TakeName(const std::string& name) const {
    Label label;
    if (name.size() >= label.name.size()) {
        return std::make_error_code(std::errc::filename_too_long);
    }
    const Handle lock = LockNames();
    if (!lock || !ReadLabel(HandleOf(m_file.Descriptor()), label)) {
        return LastError();
    }
    EachFile([&](Handle& file, const Label& other) {
        if (other.Has(name) && other.token != label.token) {
            Drop(file.get(), other);
        }
        return false;
    });
    label.name = {};
    std::ranges::copy(name, label.name.begin());
    label.naming = Naming::Named;
    return WriteLabel(HandleOf(m_file.Descriptor()), label) ? std::error_code{} : LastError();
}

void SharedFile::DropName(const std::string& name) const {
    Label label;
    if (ReadLabel(HandleOf(m_file.Descriptor()), label) && label.Has(name)) {
        Drop(HandleOf(m_file.Descriptor()), label);
    }
}

SharedFile::State SharedFile::Now() const {
    Label label;
    if (!ReadLabel(HandleOf(m_file.Descriptor()), label)) {
        return {};
    }
    return {label.naming == Naming::Named, label.size};
}

bool SharedFile::LockForReading(std::uint64_t place) const {
    return Lock(place, false);
}

bool SharedFile::LockForWriting(std::uint64_t place) const {
    return m_created && Lock(place, true);
}

bool SharedFile::Lock(std::uint64_t place, bool alone) const {
    const MutexGuard guard(m_memory->mutex);
    if (!LockPlace(HandleOf(m_file.Descriptor()), place, alone)) {
        return false;
    }
    m_memory->locked.insert(place);
    return true;
}

void SharedFile::Unlock(std::uint64_t place) const {
    const MutexGuard guard(m_memory->mutex);
    if (m_memory->locked.erase(place) > 0) {
        UnlockPlace(HandleOf(m_file.Descriptor()), place);
    }
}

bool SharedFile::LockedElsewhere(std::uint64_t place) const {
    const MutexGuard guard(m_memory->mutex);
    if (m_memory->locked.contains(place)) {
        return false;
    }
    // The system answers only to who takes the lock. Another one that asks holds it for a moment.
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (LockPlace(HandleOf(m_file.Descriptor()), place, true)) {
            UnlockPlace(HandleOf(m_file.Descriptor()), place);
            return false;
        }
        SleepFor(kBetweenAttempts);
    }
    return true;
}

std::vector<std::string> SharedFileNames() {
    std::vector<std::string> names;
    EachFile([&](Handle& /*file*/, const Label& label) {
        if (label.naming == Naming::Named) {
            names.emplace_back(label.name.data());
        }
        return false;
    });
    return names;
}

}  // namespace Korvex3Sync::os
