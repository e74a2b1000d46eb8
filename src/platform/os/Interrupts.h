#pragma once

namespace Korvex3Sync::os {

/// The interrupts of the process, for InterruptWatch: one thread waits for them, any may end the
/// wait.

/// From now on the first interrupt ends a wait, and the second one ends the process with this code.
void TakeInterrupts(int exitCode);
/// What the process did with interrupts before holds again.
void ReturnInterrupts();
/// Whether there has been one since TakeInterrupts.
bool Interrupted();
/// False if the wait was ended, true for an interrupt.
bool WaitForInterrupt();
void EndWaitForInterrupt();

}  // namespace Korvex3Sync::os
