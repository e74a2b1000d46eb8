#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// A file that is there whole or not at all: it is written beside its place under a temporary name
/// and renamed when it is complete. Without Commit the temporary file is removed and a file that
/// stood in its place stays as it was. One thread.
class AtomicFile {
public:
    /// All throw FileError.
    explicit AtomicFile(std::filesystem::path path);
    void Write(std::span<const unsigned char> bytes);
    /// Closes and renames; to be called once, last.
    void Commit();
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::filesystem::path m_path;
    std::filesystem::path m_temporary;
    std::unique_ptr<std::FILE, Close> m_file;
};

/// Writes a whole file. Throws FileError.
void WriteFile(const std::filesystem::path& path, std::span<const unsigned char> bytes);
void WriteFile(const std::filesystem::path& path, std::string_view text);

/// Makes the folder and its parents where they are missing and proves that a file can be written in
/// it. Throws CommandError.
void PrepareFolder(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
