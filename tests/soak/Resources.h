#pragma once

#include <cstddef>
#include <string>

namespace Korvex3Sync::tests::soak {

/// What the process holds at this moment.
struct Resources {
    std::size_t threads = 0;
    std::size_t files = 0;  // open file descriptors
    std::size_t bytes = 0;  // taken from the allocator and not given back

    static Resources Now();
};

/// Watches what is held whenever nothing is connected. The first measures are the warming up.
class ResourceWatch {
public:
    /// Says in one line what has grown; empty while nothing has.
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
