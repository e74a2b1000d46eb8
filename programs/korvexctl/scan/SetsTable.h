#pragma once

#include <filesystem>
#include <optional>
#include <span>

#include "korvexctl/files/TemporaryFile.h"
#include "korvexctl/scan/SetRecord.h"

namespace Korvex3Sync::korvexctl {

/// A CSV file with a line for each set of a scan, written while it runs. Seconds count from the
/// first set; an interval is the time since the set before. One thread.
class SetsTable {
public:
    explicit SetsTable(const std::filesystem::path& file) : m_path(file) {}

    /// Throws CommandError when the lines cannot be written.
    void Add(std::span<const SetRecord> sets);
    /// Gives the file its name; there is none without a set. Throws as Add does.
    void PutInPlace();

private:
    const std::filesystem::path m_path;
    std::optional<TemporaryFile> m_file;
    double m_last = 0;  // seconds of the last set
};

}  // namespace Korvex3Sync::korvexctl
