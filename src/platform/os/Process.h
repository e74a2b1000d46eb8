#pragma once

namespace Korvex3Sync::os {

/// The number of this process. A forked child has another one than its parent.
long CurrentProcess();

/// Separates this process from the one that started it. Standard input, output and error become
/// empty, so nobody has to read what it prints. Ctrl-C in the terminal of the starting process does
/// not reach it, unless a shell started it as a command of its own.
void BecomeBackgroundProcess();

}  // namespace Korvex3Sync::os
