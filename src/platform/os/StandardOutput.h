#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

#include "platform/os/File.h"

namespace Korvex3Sync::os {

/// Reserves standard output while it exists: what the rest of the process prints is discarded or
/// passed on, and only Write reaches the real standard output. One per process, created before
/// other threads run.
class RealStandardOutput {
public:
    RealStandardOutput();
    /// Ends as EndPrints does, and restores standard output.
    ~RealStandardOutput();
    RealStandardOutput(const RealStandardOutput&) = delete;
    RealStandardOutput& operator=(const RealStandardOutput&) = delete;

    std::error_code Write(std::string_view text) const noexcept { return m_real.Write(text); }
    /// Calls `take` for each line that is printed from now on, without its end, on a separate
    /// thread. To be called at most once. Throws std::system_error when the system gives no pipe or
    /// thread.
    void PassPrints(std::function<void(std::string_view line)> take);
    /// Passes on what was printed so far, and discards prints from now on.
    void EndPrints() noexcept;

private:
    File m_real;
    std::thread m_passing;
};

/// The descriptor that had this number before a RealStandardOutput was made.
int DescriptorBefore(int number);

/// How many characters a line of standard output has; nothing when it is no terminal.
std::optional<std::size_t> TerminalColumns();
/// Makes the terminal show the texts of this process, which are UTF-8. A terminal that showed other
/// texts before does so again when the process ends by itself.
void ShowUtf8();
/// Whether standard error is a terminal that understands escape sequences. Switches them on where
/// the system leaves that to the program.
bool StandardErrorTakesEscapes();

}  // namespace Korvex3Sync::os
