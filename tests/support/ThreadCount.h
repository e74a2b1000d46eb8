#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace Korvex3Sync::tests::support {

/// The current number of threads of this process.
inline std::size_t ThreadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

}  // namespace Korvex3Sync::tests::support
