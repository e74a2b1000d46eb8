#pragma once

#include <filesystem>
#include <span>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/files/FolderLock.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/pictures/ScanFiles.h"
#include "korvexctl/scan/ScanReport.h"
#include "korvexctl/scan/ScanRun.h"
#include "korvexctl/scan/SetsTable.h"

namespace Korvex3Sync::korvexctl {

class LeftOn;

/// The folder that a scan fills, locked for it: made if it is missing, proved to be writable, and
/// rid of the files of an earlier scan as soon as there is one of this scan.
class ScanFolder {
public:
    /// Pictures go through `store`. Throws CommandError for a folder that cannot be used; nothing
    /// in it is changed.
    ScanFolder(const std::filesystem::path& folder, StoreFile store);

    /// Any one thread at a time. Throws CommandError.
    void Store(const std::filesystem::path& file, std::span<const unsigned char> bytes);
    SetsTable& Table() { return m_table; }

    /// After the last picture: writes what the scan leaves beside them, and lists all files in the
    /// report. scan.json comes last, when the disk has all others. A scan without a set leaves
    /// nothing. Throws CommandError for the first file that could not be written.
    void Finish(ScanReport& report, const PictureWriter& writer, const ScanNotes& notes,
                const Outcome& outcome, const LeftOn& leftOn);

private:
    void ListPictures(ScanReport& report, const PictureWriter& writer) const;
    void WriteText(const char* name, const std::string& text, ScanReport& report);

    /// Makes the folder before it is locked.
    class Prepared {
    public:
        explicit Prepared(const std::filesystem::path& folder);
    };

    const std::filesystem::path m_folder;
    const StoreFile m_store;
    const Prepared m_prepared;
    const FolderLock m_lock;
    EarlierScan m_earlier;
    SetsTable m_table;
};

}  // namespace Korvex3Sync::korvexctl
