#pragma once

namespace Korvex3Sync::korvexctl {

/// A bar on the terminal's error output; does nothing when it is switched off. The destructor
/// clears it. One thread.
class ProgressBar {
public:
    explicit ProgressBar(bool on) : m_on(on) {}
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(int done, int all);

private:
    const bool m_on;
    bool m_shown = false;
};

}  // namespace Korvex3Sync::korvexctl
