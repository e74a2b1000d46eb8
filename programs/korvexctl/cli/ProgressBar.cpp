#include "korvexctl/cli/ProgressBar.h"

#include <algorithm>
#include <cmath>

#include "platform/os/CriticalSection.h"
#include "platform/os/Print.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kCells = 24;
constexpr const char* kClearLine = "\r\033[K";

os::Mutex s_mutex;
bool s_shown KORVEX_GUARDED_BY(s_mutex) = false;

/// Clears the bar that is there.
const char* Clearing() KORVEX_REQUIRES(s_mutex) {
    const char* const clearing = s_shown ? kClearLine : "";
    s_shown = false;
    return clearing;
}

}  // namespace

void ProgressBar::Show(std::optional<double> done, const std::string& text) const {
    if (!m_on) {
        return;
    }
    std::string line;
    if (done) {
        const auto full =
            static_cast<std::size_t>(std::lround(std::clamp(*done, 0.0, 1.0) * kCells));
        line = "[" + std::string(full, '#') + std::string(kCells - full, '.') + "] ";
    }
    line += text;
    const os::MutexGuard guard(s_mutex);
    os::PrintError("%s%s", kClearLine, line.c_str());
    s_shown = true;
}

ProgressBar::~ProgressBar() {
    const os::MutexGuard guard(s_mutex);
    os::PrintError("%s", Clearing());
}

void PrintErrorLine(const std::string& line) {
    const os::MutexGuard guard(s_mutex);
    os::PrintError("%s%s\n", Clearing(), line.c_str());
}

}  // namespace Korvex3Sync::korvexctl
