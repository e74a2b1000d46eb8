#include "korvexctl/scan/ScanFolder.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "korvexctl/files/FileError.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/scan/RunPicture.h"
#include "platform/os/File.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// A head file for the recording in its own folder.
std::string ReplayText(const ScanReport& report) {
    const Camera& camera = report.cameras.front();
    std::ostringstream text;
    text << "# Replays the sets recorded in this folder: korvexctl --virtual=" << kReplayFile
         << " scan\n\n[camera]\nwidth = " << camera.width << "\nheight = " << camera.height
         << "\ncolor = " << (report.counts.withColor > 0 ? "true" : "false")
         << "\n\n[replay]\nfolder = \".\"\n";
    return text.str();
}

}  // namespace

ScanFolder::Prepared::Prepared(const std::filesystem::path& folder) {
    PrepareFolder(folder);
}

ScanFolder::ScanFolder(const std::filesystem::path& folder, StoreFile store)
    : m_folder(folder),
      m_store(std::move(store)),
      m_prepared(folder),
      m_lock(folder),
      m_earlier(folder),
      m_table(folder / kSetsFile) {}

void ScanFolder::Store(const std::filesystem::path& file, std::span<const unsigned char> bytes) {
    m_earlier.Remove();
    m_store(file, bytes);
}

void ScanFolder::ListPictures(ScanReport& report, const PictureWriter& writer) const {
    for (const WrittenSet& set : writer.Pictures()) {
        report.files.insert(report.files.end(), set.files.begin(), set.files.end());
    }
    if (writer.HasSheet()) {
        report.files.emplace_back(kContactSheetFile);
    }
}

void ScanFolder::WriteText(const char* name, const std::string& text, ScanReport& report) {
    WriteInFolder(m_folder / name, text, Durability::Later);
    report.files.emplace_back(name);
}

void ScanFolder::Finish(ScanReport& report, const PictureWriter& writer, const ScanNotes& notes,
                        const Outcome& outcome, const LeftOn& leftOn) {
    ListPictures(report, writer);
    writer.ThrowFailure();
    if (notes.failure) {
        std::rethrow_exception(notes.failure);
    }
    if (report.counts.delivered == 0) {
        return;
    }
    m_earlier.Remove();  // when no picture of it was kept
    m_table.PutInPlace();
    report.files.emplace_back(kSetsFile);
    WriteText(kRunFile, DrawRun(notes.history, Headline(report)), report);
    if (report.recorded > 0) {
        WriteText(kReplayFile, ReplayText(report), report);
    }
    RequireWritten(os::SyncFileSystem(m_folder),
                   "cannot write to the folder " + os::TextOf(m_folder));
    Outcome whole = outcome;
    whole.figures->update(ToJson(report));
    WriteInFolder(m_folder / kFiguresFile, leftOn.Told(whole).Document(), Durability::Now);
}

}  // namespace Korvex3Sync::korvexctl
