#pragma once

namespace Korvex3Sync::tests {

/// For the main function of a test program that ends processes by name, or is tested with such a
/// library: starts the program once more, in a process namespace of its own, with a /dev/shm of its
/// own and as a file in a new folder, which is its application directory then. There it calls `run`
/// and returns its result.
/// Everything that was started in the namespace ends with it, and the folder is removed.
int RunInProcessNamespace(int argc, char** argv, int (*run)(int argc, char** argv));

}  // namespace Korvex3Sync::tests
