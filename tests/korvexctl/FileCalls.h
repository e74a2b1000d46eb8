#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Korvex3Sync::tests {

/// Records the calls that sync, rename and link files or change their owner, while it exists, by
/// the names of the files: "fsync file", "rename a -> b", "renameat2 a -> b", "link a -> b",
/// "fchown file 0 100", "fchown file - 100" where the owner stays. One at a time.
class FileCalls {
public:
    /// Called before each of these calls; anything but 0 is the errno that refuses it.
    using Before = std::function<int(const std::string& call)>;

    explicit FileCalls(Before before = {});
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    const std::vector<std::string>& Seen() const { return m_seen; }

    /// Records the call; the errno that refuses it, or 0.
    int Meet(const std::string& call);

private:
    const Before m_before;
    std::vector<std::string> m_seen;
};

}  // namespace Korvex3Sync::tests
