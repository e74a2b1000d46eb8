#include "korvexctl/system/Descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/FileError.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr mode_t kLogFileMode = 0644;

bool WriteAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

StandardOutput::StandardOutput(bool verbose) {
    std::fflush(stdout);
    m_real = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
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
    std::fflush(stdout);
    if (m_real >= 0) {
        ::dup2(m_real, STDOUT_FILENO);
        ::close(m_real);
    }
    if (m_log >= 0) {
        ::close(m_log);
    }
}

void StandardOutput::LogTo(const std::string& file) {
    m_log = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kLogFileMode);
    if (m_log < 0) {
        throw FileError("cannot open the log file " + file, errno);
    }
    std::fflush(stdout);
    ::dup2(m_log, STDOUT_FILENO);
}

void StandardOutput::Write(std::string_view text) {
    if (!WriteAll(m_real, text)) {
        throw FileError("cannot write to standard output", errno);
    }
}

void StandardOutput::WriteLog(std::string_view text) const noexcept {
    if (m_log >= 0) {
        WriteAll(m_log, text);
    }
}

bool ErrorOutputIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace Korvex3Sync::korvexctl
