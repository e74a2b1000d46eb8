#pragma once

namespace Korvex3Sync::device_service {

/// How ZrSyncService.exe ends.
enum class ExitCode {
    Done = 0,         ///< it was asked to end
    NotStarted = 1,   ///< standard error says why
    Usage = 2,        ///< it takes no arguments
    RunsAlready = 3,  ///< another one of this user runs
    DeviceHangs = 4,  ///< it was asked to end, and the device could not be closed in time
};

int RunProgram(int count, char** arguments);

}  // namespace Korvex3Sync::device_service
