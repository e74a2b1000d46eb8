#pragma once

namespace Korvex3Sync::os {

/// For tests: while it lives, nominal sleeps and waits take `factor` times as long. It works on the
/// copy of platform/os that the test itself links.
class ScopedTimeScale {
public:
    explicit ScopedTimeScale(double factor);
    ~ScopedTimeScale();
    ScopedTimeScale(const ScopedTimeScale&) = delete;
    ScopedTimeScale& operator=(const ScopedTimeScale&) = delete;

private:
    double m_previous;
};

}  // namespace Korvex3Sync::os
