#pragma once

#include <string_view>
#include <system_error>

#include "platform/os/File.h"

namespace Korvex3Sync::os {

/// Takes standard output out of the reach of everything else in this process while it lives: what
/// is printed meanwhile is discarded or goes elsewhere, and only Write reaches the real one. One
/// per process, made before other threads run.
class RealStandardOutput {
public:
    enum class Prints { Discarded, ToStandardError };

    explicit RealStandardOutput(Prints prints);
    /// Flushes what was printed and gives standard output back.
    ~RealStandardOutput();
    RealStandardOutput(const RealStandardOutput&) = delete;
    RealStandardOutput& operator=(const RealStandardOutput&) = delete;

    std::error_code Write(std::string_view text) const noexcept { return m_real.Write(text); }
    /// What is printed from now on goes to this file.
    void SendPrintsTo(const File& file) noexcept;
    /// Writes what was printed and is still buffered.
    std::error_code FlushPrints() noexcept;

private:
    File m_real;
};

/// The descriptor that had this number before a RealStandardOutput was made.
int DescriptorBefore(int number);

/// Whether standard error is a terminal.
bool StandardErrorIsTerminal();

}  // namespace Korvex3Sync::os
