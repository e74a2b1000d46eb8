#include "korvexctl/cli/ProgressBar.h"

#include <cstdio>
#include <string>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kCells = 40;

}  // namespace

void ProgressBar::Show(int done, int all) {
    if (!m_on || all <= 0) {
        return;
    }
    const auto full = static_cast<std::size_t>(static_cast<long long>(kCells) * done / all);
    const std::string bar = std::string(full, '#') + std::string(kCells - full, '.');
    std::fprintf(stderr, "\r[%s] %d/%d sets", bar.c_str(), done, all);
    std::fflush(stderr);
    m_shown = true;
}

ProgressBar::~ProgressBar() {
    if (m_shown) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
}

}  // namespace Korvex3Sync::korvexctl
