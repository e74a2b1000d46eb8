#include "korvexctl/files/WriteFile.h"

#include <string>

#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace fs = std::filesystem;

namespace {

std::string CannotWrite(const fs::path& path) {
    return "cannot write " + os::TextOf(path);
}

std::string_view AsText(std::span<const unsigned char> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Writes an invisible file. Being able to create it does not prove that there is space for its
/// content.
void TryToWrite(const fs::path& place, const std::string& what) {
    TemporaryFile(place, what).Write("can this be written?\n");
}

}  // namespace

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
    file.PutInPlace(existing, Durability::Now);
}

void WriteInFolder(const fs::path& file, std::string_view text, Durability durability) {
    TemporaryFile temporary(file, CannotWrite(file));
    temporary.Write(text);
    temporary.PutInPlace(Existing::Replaced, durability);
}

void StoreWhole(const fs::path& file, std::span<const unsigned char> bytes) {
    WriteInFolder(file, AsText(bytes), Durability::Now);
}

void StoreUnsynced(const fs::path& file, std::span<const unsigned char> bytes) {
    WriteInFolder(file, AsText(bytes), Durability::Later);
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
    RequireWritten(error, "cannot make the folder " + os::TextOf(folder));
    TryToWrite(folder / "korvexctl", "cannot write in the folder " + os::TextOf(folder));
}

}  // namespace Korvex3Sync::korvexctl
