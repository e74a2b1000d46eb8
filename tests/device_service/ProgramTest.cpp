#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "device_service/ServiceSession.h"
#include "platform/os/InstanceLock.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The program, with folders of its own and a hub in this process.
class ProgramTest : public testing::Test {
protected:
    ProgramTest() : m_hub("1", [] {}) {
        std::string reason;
        EXPECT_TRUE(m_hub.Listen(reason)) << reason;
    }

    ~ProgramTest() override {
        // Only a failed test leaves a service of its folder behind.
        if (Holder() > 0) {
            ::kill(static_cast<pid_t>(Holder()), SIGKILL);
        }
    }

    static ChildOptions With(const std::string& variable, const std::string& value) {
        ChildOptions options;
        options.environment.emplace_back(variable, value);
        return options;
    }
    static ChildOptions WithHead() { return With("KORVEX_VIRTUAL_HEAD", "default"); }
    long Holder() const { return os::InstanceLockHolder(m_folders.Runtime() / "service.lock"); }
    bool WaitUntilItServes() const {
        link::Client client;
        link::GetServiceState::Out state;
        return support::WaitUntil([&] {
            return client.Call<link::GetServiceState>({}, state) == STATUS_SUCCESS &&
                   std::get<0>(state).process == Holder();
        });
    }
    std::string Log() const {
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(m_folders.Logs())) {
            if (entry.path().filename().string().starts_with("ZrSyncService.")) {
                std::ifstream file(entry.path());
                text.append(std::istreambuf_iterator<char>(file), {});
            }
        }
        return text;
    }

    const Folders m_folders;
    const std::vector<std::string> m_command{KORVEX_PROGRAMS "/ZrSyncService.exe"};

private:
    link::HubServer m_hub;
};

TEST_F(ProgramTest, ServesUntilItIsToldToEnd) {
    ChildProcess service(m_command, WithHead());
    ASSERT_TRUE(WaitUntilItServes());
    {
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        ASSERT_EQ(client->setScanCallBackFunction(client.Id(), true), STATUS_SUCCESS);
        ASSERT_EQ(client->setVideoTriggerPeriod(client.Id(), 10), STATUS_SUCCESS);
        ASSERT_EQ(client->enableVideoTrigger(client.Id(), TRIGGER_PATTERN, true), STATUS_SUCCESS);
        ASSERT_TRUE(client.WaitForNotices(5));
        EXPECT_EQ(SharedFiles().size(), 2U);
        service.Signal(SIGTERM);
        const ChildResult result = service.Wait();
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output, "");
    }
    EXPECT_TRUE(SharedFiles().empty());
    EXPECT_EQ(Holder(), 0);
    EXPECT_THAT(Log(), HasSubstr("has connected the device"));
    EXPECT_THAT(Log(), HasSubstr("ends on request"));
    EXPECT_THAT(Log(), HasSubstr("EnableVideoTrigger enter"));
    EXPECT_THAT(Log(), Not(HasSubstr("GetScanStatistics")));
}

TEST_F(ProgramTest, EndsWhenAClientAsks) {
    ChildProcess service(m_command);
    ASSERT_TRUE(WaitUntilItServes());
    link::Client client;
    link::StopService::Out nothing;
    EXPECT_EQ(client.Call<link::StopService>({}, nothing), STATUS_SUCCESS);
    EXPECT_EQ(service.Wait().exitCode, 0);
}

TEST_F(ProgramTest, ASecondStartSaysSo) {
    ChildProcess service(m_command);
    ASSERT_TRUE(WaitUntilItServes());
    const ChildResult second = RunChild(m_command);
    EXPECT_EQ(second.exitCode, 3);
    EXPECT_EQ(second.error,
              "ZrSyncService.exe: already running, process " + std::to_string(Holder()) + "\n");
    EXPECT_TRUE(WaitUntilItServes());
    service.Signal(SIGTERM);
    EXPECT_EQ(service.Wait().exitCode, 0);
}

TEST_F(ProgramTest, TakesThePlaceOfAServiceThatWasKilled) {
    {
        ChildProcess service(m_command, WithHead());
        ASSERT_TRUE(WaitUntilItServes());
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        service.Signal(SIGKILL);
        // At once, as a host does that replaces a service.
        ChildProcess next(m_command, WithHead());
        ASSERT_EQ(service.Wait().signal, SIGKILL);
        ASSERT_TRUE(WaitUntilItServes());
        EXPECT_TRUE(support::WaitUntil([] { return SharedFiles().empty(); }));
        ASSERT_TRUE(support::WaitUntil([&] { return client.Connect() == STATUS_SUCCESS; }));
        EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
        EXPECT_TRUE(SharedFiles().empty());
        next.Signal(SIGTERM);
        EXPECT_EQ(next.Wait().exitCode, 0);
    }
}

TEST_F(ProgramTest, DoesNotDependOnWhoStartedIt) {
    const std::string program = m_command.front();
    // A host whose pipe has no reader, and that is gone at once.
    const ChildResult host = RunChild(
        {"/bin/sh", "-c", program + " < /dev/null 2>&1 > /dev/full | true & exit 0"}, WithHead());
    EXPECT_EQ(host.exitCode, 0);
    ASSERT_TRUE(WaitUntilItServes());
    const std::string folder = "/proc/" + std::to_string(Holder()) + "/fd/";
    for (const char* standard : {"0", "1", "2"}) {
        EXPECT_EQ(std::filesystem::read_symlink(folder + standard), "/dev/null");
    }
    ServiceClient client;
    EXPECT_EQ(client.Connect(), STATUS_SUCCESS);
    EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
    ASSERT_EQ(::kill(static_cast<pid_t>(Holder()), SIGTERM), 0);
    EXPECT_TRUE(support::WaitUntil([&] { return Holder() == 0; }));
}

TEST_F(ProgramTest, SaysWhyItCannotStart) {
    const ChildResult usage = RunChild({m_command.front(), "--help"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_EQ(usage.error, "ZrSyncService.exe: takes no arguments\n");
    const std::string nowhere = (m_folders.Base() / "missing").string();
    const ChildResult started = RunChild(m_command, With("XDG_RUNTIME_DIR", nowhere));
    EXPECT_EQ(started.exitCode, 1);
    EXPECT_THAT(started.error, HasSubstr("ZrSyncService.exe: "));
    EXPECT_THAT(started.error, HasSubstr(nowhere));
}

}  // namespace
}  // namespace Korvex3Sync::tests
