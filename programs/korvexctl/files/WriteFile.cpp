#include "korvexctl/files/WriteFile.h"

#include <random>
#include <string>
#include <utility>

#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"

namespace Korvex3Sync::korvexctl {

namespace fs = std::filesystem;

namespace {

constexpr int kMostTries = 100;
constexpr std::size_t kMostOfName = 200;  // a longer one would leave no room for the rest
constexpr int kEndLength = 6;

std::string CannotWrite(const fs::path& path) {
    return "cannot write " + path.string();
}

fs::path HiddenBeside(const fs::path& place, std::random_device& random) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::uniform_int_distribution<std::size_t> letter(0, kLetters.size() - 1);
    std::string name = "." + place.filename().string().substr(0, kMostOfName) + ".";
    for (int i = 0; i < kEndLength; ++i) {
        name += kLetters[letter(random)];
    }
    return place.parent_path() / name;
}

/// A temporary file for a replacement: hidden, in the same folder, with a new name and the
/// permissions of the file that it replaces. The destructor removes it unless PutInPlace has
/// renamed it. The functions throw a FileError whose text begins with `what`.
class TemporaryFile {
public:
    /// For a file at this path, which is no link.
    TemporaryFile(const fs::path& place, std::string what)
        : m_place(place), m_what(std::move(what)) {
        std::error_code unknown;
        const bool replaces = fs::exists(place, unknown);
        const auto access = replaces ? os::FileAccess::UserOnly : os::FileAccess::Usual;
        std::random_device random;
        std::error_code error;
        for (int i = 0; i < kMostTries && !m_file; ++i) {
            m_path = HiddenBeside(place, random);
            m_file = os::CreateNewFile(m_path, access, error);
            if (error && error != std::errc::file_exists) {
                break;
            }
        }
        RequireWritten(error, m_what);
        if (replaces) {
            os::CopyPermissions(place, m_file);
        }
    }
    ~TemporaryFile() {
        if (!m_inPlace) {
            std::error_code ignored;
            fs::remove(m_path, ignored);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void Write(std::string_view bytes) { RequireWritten(m_file.Write(bytes), m_what); }

    /// Writes the content to the disk before the rename. Otherwise a power failure could leave an
    /// empty file.
    void PutInPlace(Existing existing) {
        RequireWritten(m_file.Sync(), m_what);
        RequireWritten(m_file.Close(), m_what);
        std::error_code error;
        if (existing == Existing::Kept) {
            error = os::RenameToNew(m_path, m_place);
        } else {
            fs::rename(m_path, m_place, error);
        }
        RequireWritten(error, m_what);
        m_inPlace = true;
        RequireWritten(os::SyncFolder(m_place.parent_path()), m_what);
    }

private:
    const fs::path m_place;
    const std::string m_what;
    fs::path m_path;
    os::File m_file;
    bool m_inPlace = false;
};

/// Writes an invisible file. Being able to create it does not prove that there is space for its
/// content.
void TryToWrite(const fs::path& place, const std::string& what) {
    TemporaryFile(place, what).Write("can this be written?\n");
}

}  // namespace

void WriteFile(const fs::path& path, std::span<const unsigned char> bytes) {
    WriteFile(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

void WriteFile(const fs::path& path, std::string_view text, Existing existing) {
    const std::string what = CannotWrite(path);
    const Place place =
        existing == Existing::Kept ? Place{Place::Kind::Free, path} : FindPlace(path, what);
    if (place.kind == Place::Kind::Stream) {
        os::File stream = OpenStream(place, what);
        RequireWritten(stream.Write(text), what);
        RequireWritten(stream.Close(), what);
        return;
    }
    TemporaryFile file(place.path, what);
    file.Write(text);
    file.PutInPlace(existing);
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
    RequireWritten(error, "cannot make the folder " + folder.string());
    TryToWrite(folder / "korvexctl", "cannot write in the folder " + folder.string());
}

}  // namespace Korvex3Sync::korvexctl
