#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace Korvex3Sync::os {

/// A file, FIFO or device that is open for writing, or nothing. The destructor closes it.
class File {
public:
    File() = default;
    /// Takes ownership of a descriptor; -1 means none.
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
    /// Returns when everything written is on the disk and survives a power failure.
    std::error_code Sync() const noexcept;
    /// An error means that data written before did not reach the file.
    std::error_code Close() noexcept;

private:
    int m_descriptor = -1;
};

/// The first `most` bytes of a file, fewer where it is shorter. Does not wait: a FIFO without a
/// writer and a file of the system that has nothing to give now fail or are empty.
std::string ReadWithoutWaiting(const std::filesystem::path& path, std::size_t most,
                               std::error_code& error);

/// Who may use a file that is created.
enum class FileAccess {
    Usual,     ///< everybody whom the umask of this user allows
    UserOnly,  ///< only this user
};

/// Creates a file; fails with errc::file_exists if the name exists. Returns no file on an error.
File CreateNewFile(const std::filesystem::path& path, FileAccess access, std::error_code& error);

/// Opens a file for appending, and creates it if it is missing. Returns no file on an error.
File OpenForAppending(const std::filesystem::path& path, std::error_code& error);

/// Opens a FIFO, a character device or an open descriptor of this process. Does not wait: fails
/// with errc::no_such_device_or_address if the FIFO has no reader. Returns no file on an error.
File OpenStream(const std::filesystem::path& path, std::error_code& error);

/// Checks whether this user may write to what OpenStream would open, without opening it. Fails with
/// errc::bad_file_descriptor for a descriptor that is open only for reading.
std::error_code CheckStreamAccess(const std::filesystem::path& path);

/// Whether the path names an open descriptor of this process, such as /dev/stdout, or a device that
/// is in no folder, such as NUL on Windows. Such a path is for OpenStream.
bool IsNamedStream(const std::filesystem::path& path);

/// Gives the file the owner, the group and the permissions of the file that it replaces, as far as
/// this user and the file system can. If the group cannot be kept, the new group gets no
/// permissions. The set-user-ID and set-group-ID bits are never copied.
void CopyPermissions(const std::filesystem::path& replaced, const File& file) noexcept;

/// Renames a file; fails with errc::file_exists if the new name exists.
std::error_code RenameToNew(const std::filesystem::path& from,
                            const std::filesystem::path& to) noexcept;

/// Returns when the names in this folder are on the disk; needed after a rename. Also succeeds if
/// the user or the file system does not allow this.
std::error_code SyncFolder(const std::filesystem::path& folder) noexcept;

/// Returns when the disk has everything that was written to the file system of this folder.
/// Succeeds where the system allows no such wait.
std::error_code SyncFileSystem(const std::filesystem::path& folder) noexcept;

/// Locks a folder for this process until the file is closed; leaves nothing in it. Fails with
/// errc::resource_unavailable_try_again when another one has the lock, in this process too.
File LockFolder(const std::filesystem::path& folder, std::error_code& error);

/// Whether an error of a write means that there is no space: full disk, quota or file size limit
/// exceeded.
bool MeansNoRoom(const std::error_code& error);

}  // namespace Korvex3Sync::os
