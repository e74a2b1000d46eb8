#pragma once

namespace Korvex3Sync::tests::soak {

/// Writes the stack of every thread of the process to the standard error stream. For a process that
/// is about to end: the threads are interrupted where they are.
void PrintAllStacks();

}  // namespace Korvex3Sync::tests::soak
