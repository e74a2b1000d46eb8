#include "support/OwnFolders.h"

#include <gmock/gmock.h>

#include "platform/os/Process.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

/// A job that this process and everything it starts belong to. When this process ends, in any way,
/// the system ends the others.
HANDLE Job() {
    static const HANDLE job = [] {
        const HANDLE made = ::CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        EXPECT_NE(::SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits,
                                            sizeof(limits)),
                  0);
        EXPECT_NE(::AssignProcessToJobObject(made, ::GetCurrentProcess()), 0);
        return made;
    }();
    return job;
}

}  // namespace

OwnFolders::OwnFolders() : m_path(NewFolder("kvж-")) {
    EXPECT_THAT(Processes(), testing::IsEmpty());
}

OwnFolders::~OwnFolders() {
    for (std::vector<long> running = Processes(); !running.empty(); running = Processes()) {
        for (const long process : running) {
            os::OtherProcess other(process);
            other.Kill();
            EXPECT_TRUE(other.WaitForEnd(std::chrono::milliseconds(5000)));
        }
    }
    RemoveFolder(m_path);
    EXPECT_FALSE(fs::exists(m_path)) << m_path << " was not removed";
}

std::vector<long> OwnFolders::Processes() const {
    constexpr std::size_t kMost = 64;
    struct {
        JOBOBJECT_BASIC_PROCESS_ID_LIST list;
        ULONG_PTR more[kMost];
    } all{};
    EXPECT_NE(
        ::QueryInformationJobObject(Job(), JobObjectBasicProcessIdList, &all, sizeof(all), nullptr),
        0);
    std::vector<long> others;
    for (DWORD i = 0; i < all.list.NumberOfProcessIdsInList; ++i) {
        const auto number = static_cast<long>(all.list.ProcessIdList[i]);
        if (number != os::CurrentProcess()) {
            others.push_back(number);
        }
    }
    return others;
}

}  // namespace Korvex3Sync::tests
