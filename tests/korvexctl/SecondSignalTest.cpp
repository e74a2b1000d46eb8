#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "korvexctl/CommandOverHead.h"
#include "support/Signals.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A snapshot whose images never come.
class KorvexctlSecondSignal : public ::testing::TestWithParam<int> {
protected:
    /// The child, once it waits for its first image: recorded cameras give none.
    std::unique_ptr<ChildProcess> StartSnap() const {
        // Ended at once, it joins no thread; the thread sanitizer has nothing to say about that.
        ChildOptions options = WithoutHead();
        const char* const sanitizer = std::getenv("TSAN_OPTIONS");
        options.environment.emplace_back(
            "TSAN_OPTIONS",
            (sanitizer != nullptr ? std::string(sanitizer) + ":" : "") + "report_thread_leaks=0");
        options.environment.emplace_back("LD_PRELOAD", KORVEX_RECORDER_PRELOAD);
        options.environment.emplace_back("KORVEX_RECORDER_LOG", m_calls.string());
        auto snap = std::make_unique<ChildProcess>(
            KorvexctlCommand({"snap", "--out", m_out.string()}), options);
        EXPECT_TRUE(support::WaitUntil([this] { return Called("zr3DSetVideoTrigleMode(B1, 4)"); }));
        return snap;
    }
    /// Whether the child has made a call that begins so.
    bool Called(const std::string& call) const {
        return std::filesystem::exists(m_calls) &&
               ReadText(m_calls).find(call) != std::string::npos;
    }

    const TemporaryFolder m_folder;
    const std::filesystem::path m_out = m_folder.Path() / "snaps";

private:
    const std::filesystem::path m_calls = m_folder.Path() / "calls";
};

TEST_P(KorvexctlSecondSignal, EndsASnapshotAtOnce) {
    const auto snap = StartSnap();
    snap->Signal(GetParam());
    ASSERT_TRUE(snap->WaitForError("\n"));
    // A terminal that goes may tell it twice; a person has to ask for this end.
    snap->Signal(GetParam() == kHangUp ? kTerminate : GetParam());
    const ChildResult result = snap->Wait();
    EXPECT_EQ(result.exitCode, static_cast<int>(ExitCode::Interrupted));
    EXPECT_THAT(result.error, HasSubstr("press Ctrl-C again to quit now"));
    EXPECT_FALSE(Called("zr3DExitHidDev")) << "it did not disconnect first";
    EXPECT_THAT(FileNames(m_out), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlSecondSignal,
                         ::testing::Values(kInterrupt, kTerminate, kHangUp),
                         [](const auto& row) { return SignalName(row.param); });

}  // namespace

}  // namespace Korvex3Sync::tests
