#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace Korvex3Sync::os {

/// A file, FIFO or device that is open for writing, or none. The destructor closes it.
class File {
public:
    File() = default;
    /// Takes a descriptor over; -1 is none.
    explicit File(int descriptor) : m_descriptor(descriptor) {}
    ~File() { Close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;

    explicit operator bool() const { return m_descriptor >= 0; }
    int Descriptor() const { return m_descriptor; }

    /// Writes all bytes. Any thread.
    std::error_code Write(std::string_view bytes) const noexcept;
    /// Returns when the disk has what was written: a power failure after that loses nothing of it.
    std::error_code Sync() const noexcept;
    /// An error says that something written before did not reach the file.
    std::error_code Close() noexcept;

private:
    int m_descriptor = -1;
};

/// Who may use a file that is created.
enum class FileAccess {
    Usual,     ///< whom this user's settings (umask) allow
    UserOnly,  ///< this user
};

/// Creates a file; fails with errc::file_exists when the name is taken. No file on an error.
File CreateNewFile(const std::filesystem::path& path, FileAccess access, std::error_code& error);

/// Opens a file for appending, and creates it if it is missing. No file on an error.
File OpenForAppending(const std::filesystem::path& path, std::error_code& error);

/// Opens a FIFO, a character device or an open descriptor of this process. Does not wait: fails
/// with errc::no_such_device_or_address when nobody reads the FIFO. No file on an error.
File OpenStream(const std::filesystem::path& path, std::error_code& error);

/// Whether this user may write to what OpenStream would open, without opening it. A descriptor that
/// is open for reading only is errc::bad_file_descriptor.
std::error_code CheckStreamAccess(const std::filesystem::path& path);

/// Whether the path names a descriptor that this process has open, as /dev/stdout does.
bool IsOpenDescriptor(const std::filesystem::path& path);

/// Gives the file the owner, the group and the permissions of the one that it replaces, as far as
/// this user may and the disk can. A group that cannot be kept leaves no permissions to another
/// one; the permission to run as owner or group is never given.
void CopyPermissions(const std::filesystem::path& replaced, const File& file) noexcept;

/// Renames a file; fails with errc::file_exists when the new name is taken.
std::error_code RenameToNew(const std::filesystem::path& from,
                            const std::filesystem::path& to) noexcept;

/// Returns when the disk has the names in this folder, as after a rename. Succeeds where the user
/// or the file system allows no such wait.
std::error_code SyncFolder(const std::filesystem::path& folder) noexcept;

/// Whether the error of a write means that there is no room: a full disk, a used-up quota, a limit
/// of file sizes.
bool MeansNoRoom(const std::error_code& error);

}  // namespace Korvex3Sync::os
