#include "korvexctl/AtomicFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "korvexctl/FileError.h"

namespace Korvex3Sync::korvexctl {

namespace fs = std::filesystem;

AtomicFile::AtomicFile(fs::path path) : m_path(std::move(path)), m_temporary(m_path) {
    m_temporary += ".part";
    m_file.reset(std::fopen(m_temporary.string().c_str(), "wb"));
    if (!m_file) {
        throw FileError("cannot write " + m_path.string(), errno);
    }
}

void AtomicFile::Write(std::span<const unsigned char> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        throw FileError("cannot write " + m_path.string(), errno);
    }
}

void AtomicFile::Commit() {
    std::FILE* file = m_file.release();
    const bool flushed = std::fflush(file) == 0;
    const int flushError = errno;
    const bool closed = std::fclose(file) == 0;
    const int closeError = errno;
    std::error_code renamed;
    if (flushed && closed) {
        fs::rename(m_temporary, m_path, renamed);
        if (!renamed) {
            return;
        }
    }
    std::error_code ignored;
    fs::remove(m_temporary, ignored);
    throw FileError("cannot write " + m_path.string(), !flushed  ? flushError
                                                       : !closed ? closeError
                                                                 : renamed.value());
}

AtomicFile::~AtomicFile() {
    if (m_file) {
        m_file.reset();
        std::error_code ignored;
        fs::remove(m_temporary, ignored);
    }
}

void WriteFile(const fs::path& path, std::span<const unsigned char> bytes) {
    AtomicFile file(path);
    file.Write(bytes);
    file.Commit();
}

void WriteFile(const fs::path& path, std::string_view text) {
    WriteFile(path, std::span(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
}

void PrepareFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw FileError("cannot make the folder " + folder.string(), error.value());
    }
    const fs::path probe = folder / ".korvexctl";
    WriteFile(probe, std::string_view("can this folder be written?\n"));
    fs::remove(probe, error);
}

}  // namespace Korvex3Sync::korvexctl
