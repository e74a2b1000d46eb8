#include "korvexctl/files/StandardOutput.h"

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"
#include "platform/os/FileName.h"
#include "platform/os/Print.h"
#include "platform/text/Printable.h"

namespace Korvex3Sync::korvexctl {

StandardOutput::~StandardOutput() {
    // While the log is still open.
    m_real.EndPrints();
}

void StandardOutput::ShowPrints(const std::filesystem::path& logFile) {
    if (!logFile.empty()) {
        OpenLog(logFile);
    }
    if (!m_verbose && !m_log) {
        return;
    }
    m_real.PassPrints([this](std::string_view line) {
        const std::string shown = text::Printable(line);
        if (m_verbose) {
            os::PrintError("%s\n", shown.c_str());
        }
        WriteLog(shown);
    });
}

void StandardOutput::OpenLog(const std::filesystem::path& file) {
    const std::string what = "cannot open the log file " + os::TextOf(file);
    const Place place = FindPlace(file, what);
    if (place.kind == Place::Kind::Stream) {
        m_log = OpenStream(place, what);
    } else {
        std::error_code error;
        m_log = os::OpenForAppending(file, error);
        RequireWritten(error, what);
    }
    m_logFile = file;
}

void StandardOutput::Write(std::string_view text) {
    const std::error_code error = m_real.Write(text);
    if (error == std::errc::broken_pipe) {
        throw CommandError(ExitCode::NotWritable, "");
    }
    RequireWritten(error, "cannot write to standard output");
}

void StandardOutput::WriteLog(std::string_view line) const noexcept {
    if (!m_log) {
        return;
    }
    try {
        if (const std::error_code error = m_log.Write(std::string(line) + '\n')) {
            WarnOfLog(error);
        }
    } catch (...) {
        WarnOfLog(std::make_error_code(std::errc::not_enough_memory));
    }
}

void StandardOutput::WarnOfLog(const std::error_code& error) const noexcept {
    if (m_warned.exchange(true)) {
        return;
    }
    try {
        Say("the log file " + os::TextOf(m_logFile) + " is not whole: " + error.message() +
            "; going on without");
    } catch (...) {
        // No memory for a message; the command continues.
        return;
    }
}

}  // namespace Korvex3Sync::korvexctl
