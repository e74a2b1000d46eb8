#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <tuple>
#include <vector>

#include "korvexctl/ErrorIntoFile.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/ScanOverHead.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::HasSubstr;

/// A command with a head, and the platform call of it that hangs for a while.
struct Hanging {
    std::vector<std::string> words;
    const char* call;
    const char* before;  // what the log says ahead of it
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
    ASSERT_TRUE(command.WaitForError(hanging.before));
    command.Signal(signal);
    const ChildResult result = command.Wait();
    EXPECT_EQ(result.exitCode, static_cast<int>(ExitCode::Interrupted)) << result.error;
    EXPECT_THAT(result.error, HasSubstr("korvexctl: interrupted; "));
    EXPECT_THAT(result.error, HasSubstr("DisConnectDevice"));
}

// Camera calls: a board call would end at its reply limit.
constexpr const char* kConnecting = "OpenCamera m_bOpen=1";
constexpr const char* kConnected = "ConnectDevice leave";

const Hanging kHangingCommands[] = {
    {{"info"}, "GetExposureTime", kConnected},
    {{"get"}, "GetExposureTime", kConnected},
    {{"profile", "save", "PROFILE"}, "GetExposureTime", kConnected},
    {{"profile", "load", "PROFILE"}, "StartCamera", kConnecting},
    {{"set", "laser-line-duty", "30"}, "StartCamera", kConnecting},
    {{"user-info", "read", "3"}, "StartCamera", kConnecting},
    {{"reconnect"}, "StartCamera", kConnecting},
};

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::Values(kHangingCommands[0]),
                                            ::testing::Values(SIGINT, SIGHUP)));
INSTANTIATE_TEST_SUITE_P(Commands, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::ValuesIn(kHangingCommands),
                                            ::testing::Values(SIGTERM)));

TEST_F(ScanOverHead, PicturesThatAreStillWrittenAfterAnInterruptAreTold) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path() / "scan";
    m_options.sets = 1'000'000;
    m_options.keep = 1;
    const auto errorFile = folder.Path() / "error";
    const ErrorIntoFile errorIntoFile(errorFile);
    bool first = true;
    const korvexctl::Outcome outcome = Scan([&](const auto& file, const auto& bytes) {
        if (first) {
            first = false;
            std::raise(SIGINT);
            EXPECT_TRUE(support::WaitUntil([&errorFile] {
                return ReadText(errorFile).find(
                           "korvexctl: interrupted; writing the pictures of ") != std::string::npos;
            }));
        }
        korvexctl::StoreWhole(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_TRUE(std::filesystem::exists(m_options.folder / "set_000_left.png"));
}

TEST(KorvexctlInterrupt, ASearchWithoutAConnectionEndsWithItsAnswer) {
    const TemporaryFolder folder;
    const auto head = WriteSmallHead(folder.Path(),
                                     "[[fault]]\nwhat = \"slow\"\ncall = \"GetDeviceTotal\"\n"
                                     "extra_ms = 5000\nat_ms = 0\n");
    ChildProcess command(KorvexctlCommand({"--virtual=" + head.string(), "--verbose", "list"}),
                         WithoutHead());
    ASSERT_TRUE(command.WaitForError("GetAllSpecifyTypeCameraInformation"));
    command.Signal(SIGTERM);
    const ChildResult result = command.Wait();
    EXPECT_EQ(result.exitCode, static_cast<int>(ExitCode::Interrupted));
    EXPECT_THAT(result.output, HasSubstr("KV00A1001"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
