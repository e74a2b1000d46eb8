#include "platform/os/StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace Korvex3Sync::os {

namespace {

// The descriptor of the only RealStandardOutput.
int s_realOutput = -1;

}  // namespace

RealStandardOutput::RealStandardOutput(Prints prints) {
    FlushPrints();
    m_real = File(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    s_realOutput = m_real.Descriptor();
    if (prints == Prints::ToStandardError) {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        return;
    }
    const int discard = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(discard, STDOUT_FILENO);
    // If a standard descriptor was closed, /dev/null got its number and stays open there.
    if (discard > STDERR_FILENO) {
        ::close(discard);
    }
}

RealStandardOutput::~RealStandardOutput() {
    FlushPrints();
    if (m_real) {
        ::dup2(m_real.Descriptor(), STDOUT_FILENO);
        s_realOutput = -1;
    }
}

void RealStandardOutput::SendPrintsTo(const File& file) noexcept {
    FlushPrints();
    ::dup2(file.Descriptor(), STDOUT_FILENO);
}

std::error_code RealStandardOutput::FlushPrints() noexcept {
    return std::fflush(stdout) == 0 ? std::error_code{}
                                    : std::error_code(errno, std::generic_category());
}

int DescriptorBefore(int number) {
    return number == STDOUT_FILENO && s_realOutput >= 0 ? s_realOutput : number;
}

bool StandardErrorIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace Korvex3Sync::os
