#pragma once

#include <string_view>
#include <system_error>

#include "platform/os/File.h"

namespace Korvex3Sync::os {

/// Reserves standard output while it exists: what the rest of the process prints is discarded or
/// goes elsewhere, and only Write reaches the real standard output. One per process, created before
/// other threads run.
class RealStandardOutput {
public:
    enum class Prints { Discarded, ToStandardError };

    explicit RealStandardOutput(Prints prints);
    /// Flushes the prints and restores standard output.
    ~RealStandardOutput();
    RealStandardOutput(const RealStandardOutput&) = delete;
    RealStandardOutput& operator=(const RealStandardOutput&) = delete;

    std::error_code Write(std::string_view text) const noexcept { return m_real.Write(text); }
    /// Redirects prints to this file from now on.
    void SendPrintsTo(const File& file) noexcept;
    /// Writes the prints that are still buffered.
    std::error_code FlushPrints() noexcept;

private:
    File m_real;
};

/// The descriptor that had this number before a RealStandardOutput was made.
int DescriptorBefore(int number);

/// Whether standard error is a terminal.
bool StandardErrorIsTerminal();

}  // namespace Korvex3Sync::os
