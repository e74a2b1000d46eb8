#include "platform/os/StandardOutput.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace Korvex3Sync::os {

namespace {

// The descriptor of the only RealStandardOutput.
int s_realOutput = -1;

void DiscardPrints() {
    const int discard = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(discard, STDOUT_FILENO);
    // If a standard descriptor was closed, /dev/null got its number and stays open there.
    if (discard > STDERR_FILENO) {
        ::close(discard);
    }
}

/// Until the pipe has no write end any more.
void PassLines(const File& readEnd, const std::function<void(std::string_view line)>& take) {
    constexpr std::size_t kPart = 4096;
    std::array<char, kPart> part{};
    std::string line;
    while (true) {
        const ssize_t got = ::read(readEnd.Descriptor(), part.data(), part.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        for (const char c : std::string_view(part.data(), static_cast<std::size_t>(got))) {
            if (c == '\n') {
                take(line);
                line.clear();
            } else {
                line += c;
            }
        }
    }
    if (!line.empty()) {
        take(line);
    }
}

}  // namespace

RealStandardOutput::RealStandardOutput() {
    std::fflush(stdout);
    m_real = File(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    s_realOutput = m_real.Descriptor();
    DiscardPrints();
}

RealStandardOutput::~RealStandardOutput() {
    EndPrints();
    if (m_real) {
        ::dup2(m_real.Descriptor(), STDOUT_FILENO);
        s_realOutput = -1;
    }
}

void RealStandardOutput::PassPrints(std::function<void(std::string_view line)> take) {
    std::array<int, 2> pipe{-1, -1};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    const File writeEnd(pipe[1]);
    m_passing = std::thread(
        [take = std::move(take), readEnd = File(pipe[0])] { PassLines(readEnd, take); });
    // Each line is passed on when it is printed.
    std::fflush(stdout);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    ::dup2(writeEnd.Descriptor(), STDOUT_FILENO);
}

void RealStandardOutput::EndPrints() noexcept {
    std::fflush(stdout);
    if (m_passing.joinable()) {
        // Closes the last write end of the pipe.
        DiscardPrints();
        m_passing.join();
    }
}

int DescriptorBefore(int number) {
    return number == STDOUT_FILENO && s_realOutput >= 0 ? s_realOutput : number;
}

std::optional<std::size_t> TerminalColumns() {
    struct winsize size {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return std::nullopt;
    }
    return size.ws_col;
}

bool StandardErrorIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace Korvex3Sync::os
