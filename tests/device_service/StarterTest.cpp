#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "device_service/ServiceProgram.h"

namespace Korvex3Sync::tests {
namespace {

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

}  // namespace
}  // namespace Korvex3Sync::tests
