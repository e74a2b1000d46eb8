#pragma once

#include <sys/types.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace Korvex3Sync::tests::survival {

/// Starts a program as a child of this process. `ends` become its standard input and output; -1 is
/// nothing. Returns its number.
pid_t StartProcess(const std::vector<std::string>& command,
                   const std::vector<std::pair<std::string, std::string>>& environment,
                   std::array<int, 2> ends = {-1, -1});

/// Kills a child of this process and fetches its end.
void KillProcess(pid_t number);

/// Waits for the end of a child; its exit code, -1 if a signal ended it. Fails the test, and kills
/// it, at the deadline.
int WaitForEnd(pid_t number);

/// Stops a child and waits until it stands still.
void StopProcess(pid_t number);

}  // namespace Korvex3Sync::tests::survival
