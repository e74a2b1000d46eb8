#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/ErrorIntoFile.h"
#include "korvexctl/Interrupts.h"
#include "korvexctl/Program.h"
#include "korvexctl/ScanOverHead.h"
#include "korvexctl/cli/Interrupt.h"
#include "support/CaseName.h"
#include "support/Signals.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr const char* kEnded = "korvexctl: interrupted\n";
constexpr const char* kFailed = "korvexctl: interrupted: cannot connect: ";

/// A command with a head, and the platform call of it that hangs, and fails once it is let go.
struct Hanging {
    std::vector<std::string> words;
    const char* call;
    const char* end;  // the last line of the program
};

/// The whole program, met by a signal in the middle.
class KorvexctlInterrupted : public ::testing::Test {
protected:
    /// A file that profiles come from and go to.
    std::string Profile() const {
        const auto file = m_folder.Path() / "profile.toml";
        WriteText(file, "\"exposure.0\" = 6\n\"exposure.1\" = 6\n");
        return file.string();
    }

    /// Runs the whole program in this process; its exit code.
    int Run(const std::vector<std::string>& words) const {
        std::vector<std::string> all{"korvexctl"};
        for (const std::string& word : words) {
            all.push_back(word == "PROFILE" ? Profile() : word);
        }
        std::vector<const char*> arguments;
        for (const std::string& word : all) {
            arguments.push_back(word.c_str());
        }
        return korvexctl::RunProgram(static_cast<int>(arguments.size()), arguments.data());
    }

    TemporaryFolder m_folder;
    const std::filesystem::path m_errorFile = m_folder.Path() / "error";
};

/// Commands that have no end of their own to come to.
class KorvexctlInterruptAnywhere : public KorvexctlInterrupted,
                                   public ::testing::WithParamInterface<std::tuple<Hanging, int>> {
};

TEST_P(KorvexctlInterruptAnywhere, DoesNothingMoreAndDisconnectsAndTellsIt) {
    const auto& [hanging, signal] = GetParam();
    const RequestedHead head(SmallHeadDescription());
    ASSERT_TRUE(head->GetFaults().Hang(hanging.call));
    std::vector<std::string> before;
    int code = 0;
    {
        const ErrorIntoFile errorIntoFile(m_errorFile);
        std::thread person([&, call = hanging.call, number = signal] {
            EXPECT_TRUE(head->GetFaults().WaitForHang(call, std::chrono::minutes(1)));
            before = BoardChanges(*head);
            RaiseSignal(number);
            EXPECT_TRUE(errorIntoFile.WaitForMessage());
            head->GetFaults().ReleaseHangs(call);
        });
        code = Run(hanging.words);
        person.join();
    }
    const std::string error = ReadText(m_errorFile);
    EXPECT_EQ(code, static_cast<int>(ExitCode::Interrupted)) << error;
    EXPECT_THAT(error, AllOf(HasSubstr("korvexctl: interrupted; "), HasSubstr(hanging.end)));
    if (hanging.words.front() != "reconnect") {
        // The library takes a reconnection to its end.
        EXPECT_EQ(BoardChanges(*head), before);
    }
    const bool opened = hanging.end == std::string(kEnded);
    EXPECT_EQ(head->GetJournal().Texts({"zr3DExitHidDev"}).empty(), !opened);
}

const Hanging kHangingCommands[] = {
    {{"info"}, "GetExposureTime", kEnded},
    {{"get"}, "GetExposureTime", kEnded},
    {{"profile", "save", "PROFILE"}, "GetExposureTime", kEnded},
    {{"profile", "load", "PROFILE"}, "SetCameraIntParam", kEnded},
    {{"set", "exposure.0", "6", "laser-line-duty", "30"}, "SetCameraIntParam", kEnded},
    {{"user-info", "read", "3"}, "StartCamera", kEnded},
    {{"reconnect"}, "StartCamera", kEnded},
    {{"reconnect"}, "zr3DInitHidDev", kFailed},
    {{"user-info", "read", "3"}, "zr3DInitHidDev", kFailed},
};

std::string NameOfHanging(const testing::TestParamInfo<std::tuple<Hanging, int>>& row) {
    const auto& [hanging, signal] = row.param;
    return support::CaseName(hanging.words) + "_in_" + hanging.call + '_' + SignalName(signal);
}

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::Values(kHangingCommands[0]),
                                            ::testing::Values(kInterrupt, kHangUp)),
                         NameOfHanging);
INSTANTIATE_TEST_SUITE_P(Commands, KorvexctlInterruptAnywhere,
                         ::testing::Combine(::testing::ValuesIn(kHangingCommands),
                                            ::testing::Values(kTerminate)),
                         NameOfHanging);

TEST(KorvexctlInterruptWatch, IsNotMadeWithinOneThatHasMetASignal) {
    const korvexctl::EndingOnInterrupt ending;
    RaiseSignal(kInterrupt);
    ASSERT_TRUE(support::WaitUntil(korvexctl::InterruptCame));
    std::atomic<int> calls{0};
    EXPECT_THROW(CountingInterrupt inner(calls), korvexctl::CommandError);
    EXPECT_EQ(calls, 0);
}

TEST(KorvexctlInterruptWatch, HasTheSignalsOfTheOneAroundIt) {
    const korvexctl::EndingOnInterrupt ending;
    std::atomic<int> calls{0};
    {
        const CountingInterrupt inner(calls);
        RaiseSignal(kTerminate);
        EXPECT_TRUE(support::WaitUntil([&calls] { return calls == 1; }));
        EXPECT_TRUE(inner.Came());
    }
    EXPECT_FALSE(korvexctl::InterruptCame());
}

TEST_F(ScanOverHead, PicturesThatAreStillWrittenAfterAnInterruptAreTold) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path() / "scan";
    m_options.end.sets = 1'000'000;
    m_options.keep = 1;
    const auto errorFile = folder.Path() / "error";
    const ErrorIntoFile errorIntoFile(errorFile);
    bool first = true;
    const korvexctl::Outcome outcome = Scan([&](const auto& file, const auto& bytes) {
        if (first) {
            first = false;
            RaiseSignal(kInterrupt);
            EXPECT_TRUE(errorIntoFile.WaitForMessage());
        }
        korvexctl::StoreWhole(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_THAT(ReadText(errorFile), HasSubstr("korvexctl: interrupted; writing the pictures of "));
    EXPECT_TRUE(std::filesystem::exists(m_options.folder / "set_000_left.png"));
}

TEST_F(KorvexctlInterrupted, ASearchWithoutAConnectionEndsWithItsAnswer) {
    const RequestedHead head(SmallHeadDescription());
    ASSERT_TRUE(head->GetFaults().Slow("GetDeviceTotal", std::chrono::seconds(5), 1));
    // Takes a signal that comes when the search has ended.
    const UnwantedInterrupt around("the signal came too late");
    std::thread person([&head] {
        EXPECT_TRUE(
            support::WaitUntil([&head] { return head->GetFaults().Holds("GetDeviceTotal"); }));
        RaiseSignal(kTerminate);
    });
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(Run({"list"}), static_cast<int>(ExitCode::Interrupted));
    person.join();
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("KV00A1001"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
