#include "korvexctl/files/StandardOutput.h"

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"

namespace Korvex3Sync::korvexctl {

StandardOutput::StandardOutput(bool verbose)
    : m_real(verbose ? os::RealStandardOutput::Prints::ToStandardError
                     : os::RealStandardOutput::Prints::Discarded) {}

StandardOutput::~StandardOutput() {
    // Only now does an error show that prints of the library did not reach the log.
    const std::error_code error = m_real.FlushPrints();
    if (error && m_log) {
        WarnOfLog(error);
    }
}

void StandardOutput::LogTo(const std::string& file) {
    const std::string what = "cannot open the log file " + file;
    const Place place = FindPlace(file, what);
    if (place.kind == Place::Kind::Stream) {
        m_log = OpenStream(place, what);
    } else {
        std::error_code error;
        m_log = os::OpenForAppending(file, error);
        RequireWritten(error, what);
    }
    m_logFile = file;
    m_real.SendPrintsTo(m_log);
}

void StandardOutput::Write(std::string_view text) {
    RequireWritten(m_real.Write(text), "cannot write to standard output");
}

void StandardOutput::WriteLog(std::string_view text) const noexcept {
    if (!m_log) {
        return;
    }
    if (const std::error_code error = m_log.Write(text)) {
        WarnOfLog(error);
    }
}

void StandardOutput::WarnOfLog(const std::error_code& error) const noexcept {
    if (m_warned.exchange(true)) {
        return;
    }
    try {
        Say("the log file " + m_logFile + " is not whole: " + error.message() +
            "; going on without");
    } catch (...) {
        // No memory for a message; the command continues.
        return;
    }
}

}  // namespace Korvex3Sync::korvexctl
