#pragma once

#include <functional>
#include <memory>
#include <string>

namespace Korvex3Sync::background {

/// How a program in the background ends. The numbers are part of its interface.
enum class ExitCode : int {
    Ended = 0,           ///< it was asked to end
    Failed = 1,          ///< it could not begin its work; standard error and the log say why
    Usage = 2,           ///< it takes no arguments
    AlreadyRunning = 3,  ///< another process of this user does this work
};

/// Begins the work of a program, which goes on until the returned object is destroyed. Returns null
/// with the reason if it cannot. `askToEnd` ends the program; any thread may call it while the work
/// goes on.
using BeginWork = std::function<std::shared_ptr<void>(const std::function<void()>& askToEnd,
                                                      std::string& reason)>;

/// What a program is called.
struct ProgramNames {
    std::string file;      ///< its file name, in messages
    std::string lockFile;  ///< in the runtime folder of this user
    std::string log;       ///< what the names of its log files begin with
};

/// Runs a program in the background until it is asked to end: by SIGTERM, by its work, or by Ctrl-C
/// in the terminal of the shell that started it. Its lock file lets one process of this user run at
/// a time. Its log goes into files. Once the work has begun, it leaves the standard streams and the
/// terminal. Returns the exit code after the work has ended. For main only.
int RunInBackground(int count, char** arguments, const ProgramNames& names,
                    const BeginWork& beginWork);

}  // namespace Korvex3Sync::background
