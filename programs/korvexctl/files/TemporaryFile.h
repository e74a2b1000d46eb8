#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/os/File.h"

namespace Korvex3Sync::korvexctl {

/// What becomes of a file that is there already.
enum class Existing {
    Replaced,  ///< the new file keeps its permissions
    Kept,      ///< the new one is refused, also where a link leads nowhere
};

/// When the disk has what was written.
enum class Durability {
    Now,    ///< when the call returns
    Later,  ///< some time after it, or after os::SyncFileSystem
};

/// A file on its way to its place: hidden, beside it, under a name that nothing had before, with
/// the permissions of the file that it replaces. The destructor removes it unless it was put in its
/// place. All throw FileError that begins with `what`.
class TemporaryFile {
public:
    /// A link at `place` is not followed: it is what the new file replaces.
    TemporaryFile(const std::filesystem::path& place, std::string what);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void Write(std::string_view bytes) const;
    void PutInPlace(Existing existing, Durability durability);

private:
    const std::filesystem::path m_place;
    const std::string m_what;
    std::filesystem::path m_path;
    os::File m_file;
    bool m_inPlace = false;
};

}  // namespace Korvex3Sync::korvexctl
