#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "korvexctl/files/OpenedFile.h"

namespace Korvex3Sync::korvexctl {

/// A file on its way to its place: hidden, beside it, under a name that nothing had before. It has
/// the mode, the owner and the group of the file that it is to replace where this user may give
/// them, and no rights for another group. The destructor removes it unless it was put in its place.
/// All throw FileError that begins with `what` ("cannot write X").
class TemporaryFile {
public:
    /// For a file at this path, which is no link.
    TemporaryFile(const std::filesystem::path& place, std::string what);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void Write(std::string_view bytes);
    /// Closes it and puts it in its place, over what stands there.
    void Replace();
    /// Closes it and puts it in its place; fails when something stands there.
    void PutNew();

private:
    void Close();
    [[noreturn]] void Fail(int error) const;

    const std::filesystem::path m_place;
    const std::string m_what;
    std::filesystem::path m_path;  // empty: it is in its place
    OpenedFile m_file;
};

}  // namespace Korvex3Sync::korvexctl
