#include "korvexctl/files/Descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/files/FileError.h"
#include "korvexctl/files/Place.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr mode_t kLogFileMode = 0644;

// Of the one StandardOutput.
int s_realOutput = -1;

}  // namespace

StandardOutput::StandardOutput(bool verbose) {
    std::fflush(stdout);
    m_real = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    s_realOutput = m_real;
    if (verbose) {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        return;
    }
    const int discard = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(discard, STDOUT_FILENO);
    if (discard > STDERR_FILENO) {
        ::close(discard);
    }
}

StandardOutput::~StandardOutput() {
    // What the library printed shows only now that it did not get into the log.
    if (std::fflush(stdout) != 0 && m_log) {
        WarnOfLog(errno);
    }
    if (m_real >= 0) {
        ::dup2(m_real, STDOUT_FILENO);
        ::close(m_real);
        s_realOutput = -1;
    }
}

void StandardOutput::LogTo(const std::string& file) {
    const std::string what = "cannot open the log file " + file;
    const Place place = FindPlace(file, what);
    m_log = place.kind == Place::Kind::Stream
                ? OpenStream(place, what)
                : OpenedFile(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                                    kLogFileMode));
    if (!m_log) {
        throw FileError(what, errno);
    }
    m_logFile = file;
    std::fflush(stdout);
    ::dup2(m_log.Get(), STDOUT_FILENO);
}

void StandardOutput::Write(std::string_view text) {
    if (!WriteAll(m_real, text)) {
        throw FileError("cannot write to standard output", errno);
    }
}

void StandardOutput::WriteLog(std::string_view text) const noexcept {
    if (m_log && !WriteAll(m_log.Get(), text)) {
        WarnOfLog(errno);
    }
}

void StandardOutput::WarnOfLog(int error) const noexcept {
    if (m_warned.exchange(true)) {
        return;
    }
    try {
        Say("the log file " + m_logFile +
            " is not whole: " + std::generic_category().message(error) + "; going on without");
    } catch (...) {
        // No room for a message; the command goes on all the same.
        return;
    }
}

int DescriptorBefore(int number) {
    return number == STDOUT_FILENO && s_realOutput >= 0 ? s_realOutput : number;
}

bool ErrorOutputIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace Korvex3Sync::korvexctl
