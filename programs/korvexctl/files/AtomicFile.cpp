#include "korvexctl/files/AtomicFile.h"

#include <cerrno>
#include <system_error>

#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"

namespace Korvex3Sync::korvexctl {

namespace fs = std::filesystem;

namespace {

std::string CannotWrite(const fs::path& path) {
    return "cannot write " + path.string();
}

/// Writes a file that nobody sees. That it can be made does not say that there is room in it.
void TryToWrite(const fs::path& place, const std::string& what) {
    TemporaryFile(place, what).Write("can this be written?\n");
}

}  // namespace

AtomicFile::AtomicFile(const fs::path& path, Existing existing)
    : m_existing(existing), m_what(CannotWrite(path)) {
    const Place place =
        existing == Existing::Kept ? Place{Place::Kind::Free, path} : FindPlace(path, m_what);
    if (place.kind == Place::Kind::Stream) {
        m_stream = OpenStream(place, m_what);
    } else {
        m_file.emplace(place.path, m_what);
    }
}

void AtomicFile::Write(std::string_view bytes) {
    if (m_file) {
        m_file->Write(bytes);
    } else if (!WriteAll(m_stream.Get(), bytes)) {
        throw FileError(m_what, errno);
    }
}

void AtomicFile::Commit() {
    if (!m_file) {
        if (!m_stream.Close()) {
            throw FileError(m_what, errno);
        }
    } else if (m_existing == Existing::Kept) {
        m_file->PutNew();
    } else {
        m_file->Replace();
    }
}

void WriteFile(const fs::path& path, std::span<const unsigned char> bytes) {
    WriteFile(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void WriteFile(const fs::path& path, std::string_view text, Existing existing) {
    AtomicFile file(path, existing);
    file.Write(text);
    file.Commit();
}

void RequireWritable(const fs::path& path) {
    const std::string what = CannotWrite(path);
    const Place place = FindPlace(path, what);
    if (place.kind == Place::Kind::Stream) {
        RequireWritableStream(place, what);
    } else {
        TryToWrite(place.path, what);
    }
}

void PrepareFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw FileError("cannot make the folder " + folder.string(), error.value());
    }
    TryToWrite(folder / "korvexctl", "cannot write in the folder " + folder.string());
}

}  // namespace Korvex3Sync::korvexctl
