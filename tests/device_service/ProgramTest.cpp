#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "device_service/ServiceProgram.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

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
        service.Signal(kTerminate);
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
    service.Signal(kTerminate);
    EXPECT_EQ(service.Wait().exitCode, 0);
}

TEST_F(ProgramTest, TakesThePlaceOfAServiceThatWasKilled) {
    {
        ChildProcess service(m_command, WithHead());
        ASSERT_TRUE(WaitUntilItServes());
        ServiceClient client;
        ASSERT_EQ(client.Connect(), STATUS_SUCCESS);
        service.Kill();
        // At once, as a host does that replaces a service.
        ChildProcess next(m_command, WithHead());
        ASSERT_NE(service.Wait().signal, 0);
        ASSERT_TRUE(WaitUntilItServes());
        EXPECT_TRUE(support::WaitUntil([] { return SharedFiles().empty(); }));
        ASSERT_TRUE(support::WaitUntil([&] { return client.Connect() == STATUS_SUCCESS; }));
        EXPECT_EQ(client->disConnectDevice(client.Id()), STATUS_SUCCESS);
        EXPECT_TRUE(SharedFiles().empty());
        next.Signal(kTerminate);
        EXPECT_EQ(next.Wait().exitCode, 0);
    }
}

TEST_F(ProgramTest, SaysWhyItCannotStart) {
    const ChildResult usage = RunChild({m_command.front(), "--help"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_EQ(usage.error, "ZrSyncService.exe: takes no arguments\n");
    const std::filesystem::path nowhere = m_folders.Base() / "missing";
    WriteText(nowhere, "a file in the way");
    ChildOptions options;
    options.environment = FoldersIn(nowhere);
    const ChildResult started = RunChild(m_command, options);
    EXPECT_EQ(started.exitCode, 1);
    EXPECT_THAT(started.error, HasSubstr("ZrSyncService.exe: "));
    EXPECT_THAT(started.error, HasSubstr(nowhere.string()));
}

}  // namespace
}  // namespace Korvex3Sync::tests
