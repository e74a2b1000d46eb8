#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <tuple>
#include <vector>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/Korvexctl.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::HasSubstr;

/// A command with a head, and the platform call of it that hangs for a while.
struct Hanging {
    std::vector<std::string> words;
    const char* call;
};

/// Commands that have no end of their own to come to, met by a signal in the middle.
class KorvexctlInterruptAnywhere : public ::testing::TestWithParam<std::tuple<Hanging, int>> {
protected:
    /// A file that profiles come from and go to.
    std::string Profile() const {
        const auto file = m_folder.Path() / "profile.toml";
        WriteText(file, "projector-brightness = 20\nlaser-line-duty = 30\n");
        return file.string();
    }

    TemporaryFolder m_folder;
};

TEST_P(KorvexctlInterruptAnywhere, DisconnectsAndTellsIt) {
    const auto& [hanging, signal] = GetParam();
    const auto head =
        WriteSmallHead(m_folder.Path(), std::string("[[fault]]\nwhat = \"slow\"\ncall = \"") +
                                            hanging.call + "\"\nextra_ms = 5000\nat_ms = 0\n");
    const auto log = m_folder.Path() / "log";
    std::vector<std::string> words{"--virtual=" + head.string(), "--verbose"};
    for (const std::string& word : hanging.words) {
        words.push_back(word == "PROFILE" ? Profile() : word);
    }
    ChildProcess command(KorvexctlCommand(words), WithoutHead());
    ASSERT_TRUE(command.WaitForError("ConnectDevice leave"));
    command.Signal(signal);
    const ChildResult result = command.Wait();
    EXPECT_EQ(result.exitCode, static_cast<int>(ExitCode::Interrupted)) << result.error;
    EXPECT_THAT(result.error, HasSubstr("korvexctl: interrupted; "));
    EXPECT_THAT(result.error, HasSubstr("DisConnectDevice"));
}

const Hanging kHangingCommands[] = {
    {{"info"}, "zr3DQueryProjectorBrightness"},
    {{"get"}, "zr3DQueryProjectorBrightness"},
    {{"set", "laser-line-duty", "30"}, "zr3DQueryProjectorBrightness"},
    {{"user-info", "read", "3"}, "zr3DQueryProjectorBrightness"},
    {{"profile", "load", "PROFILE"}, "zr3DQueryProjectorBrightness"},
    // The reconnection asks for it.
    {{"reconnect"}, "zr3DQueryCurrentStatus"},
};

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::Values(kHangingCommands[0]),
                                            ::testing::Values(SIGINT, SIGHUP)));
INSTANTIATE_TEST_SUITE_P(Commands, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::ValuesIn(kHangingCommands),
                                            ::testing::Values(SIGTERM)));

TEST(KorvexctlInterrupt, AQuestionWithoutAConnectionEndsWithItsAnswer) {
    const TemporaryFolder folder;
    const auto head =
        WriteSmallHead(folder.Path(),
                       "[[fault]]\nwhat = \"slow\"\ncall = \"zr3DQueryFirmwareVersionFast\"\n"
                       "extra_ms = 5000\nat_ms = 0\n");
    ChildProcess command(KorvexctlCommand({"--virtual=" + head.string(), "--verbose", "firmware"}),
                         WithoutHead());
    ASSERT_TRUE(command.WaitForError("GetFirewareVersion"));
    command.Signal(SIGTERM);
    EXPECT_EQ(command.Wait().exitCode, static_cast<int>(ExitCode::Interrupted));
}

}  // namespace

}  // namespace Korvex3Sync::tests
