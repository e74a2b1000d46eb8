#include "platform/os/LogFiles.h"

#include <glog/logging.h>

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/os/FileName.h"

namespace Korvex3Sync::os {

namespace {

constexpr int kMegabytesOfAFile = 10;
constexpr int kUserOnly = 0600;

/// What the name of each log file of a program begins with.
std::string Beginning(const std::string& program) {
    return program + ".";
}

/// Names contain date and time, so this is the newest first.
std::vector<std::filesystem::path> NewestFirst(const std::filesystem::path& folder,
                                               const std::string& program) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = TextOf(entry->path().filename());
        // Only the files that glog names: a digit of the date follows.
        const std::string beginning = Beginning(program);
        if (name.starts_with(beginning) && name.size() > beginning.size() &&
            name[beginning.size()] >= '0' && name[beginning.size()] <= '9') {
            files.push_back(entry->path());
        }
    }
    std::sort(files.rbegin(), files.rend());
    return files;
}

}  // namespace

void CleanLogFiles(const std::filesystem::path& folder, const std::string& program,
                   const LogLimits& limits) {
    const auto oldest = std::filesystem::file_time_type::clock::now() - limits.age;
    const std::vector<std::filesystem::path> files = NewestFirst(folder, program);
    for (std::size_t i = 1; i < files.size(); ++i) {
        std::error_code error;
        const auto written = std::filesystem::last_write_time(files[i], error);
        if (i >= limits.files || (!error && written < oldest)) {
            std::filesystem::remove(files[i], error);
        }
    }
}

std::filesystem::path NewestLogFile(const std::filesystem::path& folder,
                                    const std::string& program) {
    const std::vector<std::filesystem::path> files = NewestFirst(folder, program);
    return files.empty() ? std::filesystem::path() : files.front();
}

LogFiles::LogFiles(const std::filesystem::path& folder, std::string program)
    : m_folder(folder), m_program(std::move(program)) {
    google::InitGoogleLogging(m_program.c_str());
    // glog writes each record to the file of its severity and of those below.
    google::SetLogDestination(google::GLOG_INFO, TextOf(m_folder / Beginning(m_program)).c_str());
    for (int severity = google::GLOG_WARNING; severity < google::NUM_SEVERITIES; ++severity) {
        google::SetLogDestination(severity, "");
    }
    google::SetLogSymlink(google::GLOG_INFO, "");
    FLAGS_max_log_size = kMegabytesOfAFile;
    FLAGS_logfile_mode = kUserOnly;
    FLAGS_logbuflevel = -1;
    FLAGS_stop_logging_if_full_disk = true;
    FLAGS_stderrthreshold = google::NUM_SEVERITIES;
    Clean();
}

LogFiles::~LogFiles() {
    google::ShutdownGoogleLogging();
}

}  // namespace Korvex3Sync::os
