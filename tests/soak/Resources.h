#pragma once

#include <cstddef>
#include <string>

namespace Korvex3Sync::tests::soak {

/// The resources that the process holds at a moment.
struct Resources {
    std::size_t threads = 0;
    std::size_t files = 0;  // open file descriptors
    std::size_t bytes = 0;  // allocated and not freed

    static Resources Now();
};

/// Measures the resources whenever nothing is connected. The first measurements are the warm-up.
class ResourceWatch {
public:
    /// Returns one line with what has grown; empty if nothing has.
    std::string Look();
    std::size_t Looks() const { return m_looks; }
    const Resources& First() const { return m_first; }
    const Resources& Last() const { return m_last; }

private:
    std::size_t m_looks = 0;
    Resources m_first;
    Resources m_last;
};

}  // namespace Korvex3Sync::tests::soak
