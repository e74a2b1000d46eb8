#pragma once

namespace Korvex3Sync::korvexctl {

/// The whole program; returns its exit code. Never throws.
int RunProgram(int count, const char* const* arguments) noexcept;

}  // namespace Korvex3Sync::korvexctl
