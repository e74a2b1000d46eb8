#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "platform/os/File.h"

namespace Korvex3Sync::os {

/// The memory of a shared file, until the object is destroyed. If the file has been cut short, an
/// access behind its end raises SIGBUS: check SharedFile::Now first.
class SharedMapping {
public:
    SharedMapping() = default;
    /// Takes ownership of mapped memory.
    explicit SharedMapping(std::span<std::byte> bytes) : m_bytes(bytes) {}
    ~SharedMapping();
    SharedMapping(const SharedMapping&) = delete;
    SharedMapping& operator=(const SharedMapping&) = delete;
    SharedMapping(SharedMapping&& other) noexcept;
    SharedMapping& operator=(SharedMapping&& other) noexcept;

    /// Only for reading if the file was opened for reading.
    std::byte* Data() const { return m_bytes.data(); }

private:
    std::span<std::byte> m_bytes;
};

/// A file that exists only in memory, shared by processes of one user. Each user has names of their
/// own. A name must not contain a slash. Any thread may call the const functions.
class SharedFile {
public:
    SharedFile() = default;

    /// Creates a file without a name, for reading and writing. If the process dies, the system
    /// removes it. It has no memory yet, see Reserve.
    static SharedFile Create(std::uint64_t size, std::error_code& error);
    /// Opens a file for reading. Fails with errc::permission_denied if the name does not lead to a
    /// regular file that belongs to this user and that nobody else may open.
    static SharedFile Open(const std::string& name, std::error_code& error);

    explicit operator bool() const { return static_cast<bool>(m_file); }

    /// Provides memory for a part of the file: writing there cannot fail later. Fails with
    /// errc::no_space_on_device if there is not enough.
    std::error_code Reserve(std::uint64_t offset, std::uint64_t size) const;
    /// Maps the first `size` bytes; for writing too if this object created the file.
    SharedMapping Map(std::size_t size, std::error_code& error) const;

    /// Gives the file a name. Another file with this name loses it. Fails with
    /// errc::operation_not_permitted if that file belongs to another user.
    std::error_code TakeName(const std::string& name) const;
    /// Removes the name if it still leads to this file.
    void DropName(const std::string& name) const;

    struct State {
        /// It has a name and belongs to this user alone. False after another file has taken the
        /// name, the name is removed, or others may open the file.
        bool usable = false;
        std::uint64_t size = 0;
    };
    State Now() const;

    /// A lock on a place, which may be beyond the end of the file. It belongs to this object and
    /// conflicts with locks of other objects, in this process too. The system releases it when the
    /// object or the process ends. Does not wait: false if there is a conflict.
    bool LockForReading(std::uint64_t place) const;
    /// The same, without any other holder. Only if this object created the file.
    bool LockForWriting(std::uint64_t place) const;
    void Unlock(std::uint64_t place) const;
    /// Whether another object holds a lock on the place.
    bool LockedElsewhere(std::uint64_t place) const;

private:
    explicit SharedFile(int descriptor, bool created) : m_file(descriptor), m_created(created) {}

    bool Lock(std::uint64_t place, bool alone) const;

    File m_file;
    bool m_created = false;
    /// What else there is on a system where a file cannot be memory only.
    struct Memory;
    std::shared_ptr<Memory> m_memory;
};

/// The names of all shared files of this user.
std::vector<std::string> SharedFileNames();

}  // namespace Korvex3Sync::os
