#include "korvexctl/cli/ProgressBar.h"

#include <string>

#include "platform/os/Print.h"

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
    os::PrintError("\r[%s] %d/%d sets", bar.c_str(), done, all);
    m_shown = true;
}

ProgressBar::~ProgressBar() {
    if (m_shown) {
        os::PrintError("\r\033[K");
    }
}

}  // namespace Korvex3Sync::korvexctl
