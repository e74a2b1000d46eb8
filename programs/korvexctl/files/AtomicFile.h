#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "korvexctl/files/OpenedFile.h"
#include "korvexctl/files/TemporaryFile.h"

namespace Korvex3Sync::korvexctl {

/// What becomes of a file that is there already.
enum class Existing {
    Replaced,  ///< it keeps its mode, and links to it stay
    Kept,      ///< the new one is refused, also where a link leads nowhere
};

/// A file that is there whole or not at all: it is written beside its place under a temporary name
/// and renamed when it is complete. Without Commit the temporary file is removed and a file that
/// stood in its place stays as it was. A FIFO or a character device is written to directly. One
/// thread.
class AtomicFile {
public:
    /// All throw CommandError, for what the system refuses a FileError.
    explicit AtomicFile(const std::filesystem::path& path, Existing existing = Existing::Replaced);
    void Write(std::string_view bytes);
    /// Closes and renames; to be called once, last.
    void Commit();

private:
    const Existing m_existing;
    const std::string m_what;
    OpenedFile m_stream;
    std::optional<TemporaryFile> m_file;  // without a stream
};

/// Writes a whole file. Throws as AtomicFile does.
void WriteFile(const std::filesystem::path& path, std::span<const unsigned char> bytes);
void WriteFile(const std::filesystem::path& path, std::string_view text,
               Existing existing = Existing::Replaced);

/// Throws what WriteFile would throw, as far as that can be known before, and leaves all as it is.
void RequireWritable(const std::filesystem::path& path);

/// Makes the folder and its parents where they are missing and proves that a file can be written in
/// it. Throws CommandError.
void PrepareFolder(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
