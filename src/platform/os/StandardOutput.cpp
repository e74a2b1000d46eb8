#include "platform/os/StandardOutput.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/os/Descriptors.h"
#include "platform/os/Print.h"

namespace Korvex3Sync::os {

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

// The descriptor of the only RealStandardOutput.
int s_realOutput = -1;

void DiscardPrints() {
    const int discard = OpenNothing();
    RedirectDescriptor(discard, kStandardOutput);
    // If a standard descriptor was closed, this one got its number and stays open there.
    if (discard > kStandardError) {
        CloseDescriptor(discard);
    }
}

/// Until the pipe has no write end any more.
void PassLines(const File& readEnd, const std::function<void(std::string_view line)>& take) {
    constexpr std::size_t kPart = 4096;
    std::array<char, kPart> part{};
    std::string line;
    while (true) {
        const std::ptrdiff_t got = ReadDescriptor(readEnd.Descriptor(), part.data(), part.size());
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
    m_real = File(DuplicateDescriptor(kStandardOutput));
    s_realOutput = m_real.Descriptor();
    DiscardPrints();
}

RealStandardOutput::~RealStandardOutput() {
    EndPrints();
    if (m_real) {
        RedirectDescriptor(m_real.Descriptor(), kStandardOutput);
        s_realOutput = -1;
    }
}

void RealStandardOutput::PassPrints(std::function<void(std::string_view line)> take) {
    std::array<int, 2> pipe{-1, -1};
    if (!MakePipe(pipe)) {
        throw std::system_error(LastError(), "pipe");
    }
    const File writeEnd(pipe[1]);
    m_passing = std::thread(
        [take = std::move(take), readEnd = File(pipe[0])] { PassLines(readEnd, take); });
    // Each line is passed on when it is printed.
    std::fflush(stdout);
    FlushEachPrint();
    RedirectDescriptor(writeEnd.Descriptor(), kStandardOutput);
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
    return number == kStandardOutput && s_realOutput >= 0 ? s_realOutput : number;
}

}  // namespace Korvex3Sync::os
