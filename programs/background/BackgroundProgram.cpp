#include "background/BackgroundProgram.h"

#include <QCoreApplication>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "platform/os/Event.h"
#include "platform/os/FileName.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/InterruptWatch.h"
#include "platform/os/Log.h"
#include "platform/os/LogFiles.h"
#include "platform/os/Print.h"
#include "platform/os/Process.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::background {

namespace {

namespace fs = std::filesystem;

/// Why the program cannot run, and how it ends.
class CannotRun : public std::runtime_error {
public:
    CannotRun(ExitCode code, const std::string& reason)
        : std::runtime_error(reason), m_code(code) {}
    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

fs::path Folder(fs::path (*find)(std::string& reason)) {
    std::string reason;
    fs::path folder = find(reason);
    if (folder.empty()) {
        throw CannotRun(ExitCode::Failed, reason);
    }
    return folder;
}

os::File Lock(const fs::path& file) {
    // A program that is being replaced may have been killed a moment ago.
    constexpr std::chrono::milliseconds kOldOneEnds{500};
    std::error_code error;
    os::File lock = os::TakeInstanceLock(file, error);
    const long holder = lock ? 0 : os::InstanceLockHolder(file);
    if (error == std::errc::resource_unavailable_try_again &&
        os::OtherProcess(holder).WaitForEnd(kOldOneEnds)) {
        lock = os::TakeInstanceLock(file, error);
    }
    if (error == std::errc::resource_unavailable_try_again) {
        throw CannotRun(ExitCode::AlreadyRunning,
                        "already running, process " + std::to_string(holder));
    }
    if (error) {
        throw CannotRun(ExitCode::Failed,
                        "cannot lock " + os::TextOf(file) + ": " + error.message());
    }
    return lock;
}

void WorkUntilAskedToEnd(const char* log, const BeginWork& beginWork, const os::LogFiles& files) {
    os::Event asked;
    const auto askToEnd = [&asked] { asked.Set(); };
    // The second signal ends a program that cannot end its work.
    const os::InterruptWatch watch(askToEnd, static_cast<int>(ExitCode::Failed));
    std::string reason;
    const std::shared_ptr<void> work = beginWork(askToEnd, reason);
    if (!work) {
        throw CannotRun(ExitCode::Failed, reason);
    }
    KORVEX_LOG(log) << "at work, process " << os::CurrentProcess();
    os::BecomeBackgroundProcess();
    while (asked.Wait(std::chrono::minutes(1)) == os::WaitResult::TimedOut) {
        files.Clean();
    }
    KORVEX_LOG(log) << "ends on request";
}

void Run(int count, char** arguments, const ProgramNames& names, const BeginWork& beginWork) {
    if (count > 1) {
        throw CannotRun(ExitCode::Usage, "takes no arguments");
    }
    os::TurnWriteSignalsIntoErrors();
    const fs::path runtimeFolder = Folder(os::RuntimeFolder);
    const fs::path logFolder = Folder(os::LogFolder);
    const os::File lock = Lock(runtimeFolder / names.lockFile);
    const os::LogFiles files(logFolder, names.log);
    const QCoreApplication application(count, arguments);
    try {
        WorkUntilAskedToEnd(names.log.c_str(), beginWork, files);
    } catch (const std::exception& error) {
        KORVEX_LOG_ERROR(names.log.c_str()) << error.what();
        throw;
    }
}

}  // namespace

int RunInBackground(int count, char** arguments, const ProgramNames& names,
                    const BeginWork& beginWork) {
    ExitCode code = ExitCode::Failed;
    try {
        Run(count, arguments, names, beginWork);
        return static_cast<int>(ExitCode::Ended);
    } catch (const CannotRun& error) {
        code = error.Code();
        os::PrintError("%s: %s\n", names.file.c_str(), error.what());
    } catch (const std::exception& error) {
        os::PrintError("%s: %s\n", names.file.c_str(), error.what());
    }
    return static_cast<int>(code);
}

}  // namespace Korvex3Sync::background
