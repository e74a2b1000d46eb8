#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/ErrorIntoFile.h"
#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/health/Selftest.h"
#include "korvexctl/health/StepRun.h"
#include "support/CaseName.h"
#include "support/Signals.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using korvexctl::Step;
using korvexctl::StepRow;
using korvexctl::StepRun;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class KorvexctlSelftest : public ::testing::Test {
protected:
    KorvexctlSelftest() {
        m_options.sets = 5;
        m_options.writeUserMemory = true;
        m_head.width = kSmallWidth;
        m_head.height = kSmallHeight;
        // More than a machine under load can fill.
        m_head.cameraBuffers = 4096;
    }

    Outcome Run() {
        auto steps = korvexctl::SelftestSteps(m_options);
        for (Step& step : steps) {
            step.limit = std::chrono::seconds(200);
        }
        StepRun run(std::move(steps));
        return korvexctl::SelftestOutcome(run.Wait([](const StepRow&) {}), false);
    }

    static std::vector<std::string> With(const Outcome& outcome, const std::string& verdict) {
        std::vector<std::string> names;
        for (const nlohmann::json& step : outcome.figures["steps"]) {
            if (step["verdict"] == verdict) {
                names.push_back(step["name"]);
            }
        }
        return names;
    }

    korvexctl::SelftestOptions m_options;
    virtual_head::HeadDescription m_head;
};

TEST_F(KorvexctlSelftest, TheDefaultHeadPassesEveryStep) {
    const virtual_head::HeadDescription standard;
    m_head.width = standard.width;
    m_head.height = standard.height;
    m_options.periodMs = 50;
    const RequestedHead head(m_head);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    EXPECT_EQ(outcome.figures["failed"], 0);
    // Orders that two sensors do not have.
    EXPECT_THAT(With(outcome, "not run"),
                UnorderedElementsAre("exposure.2", "gain.2", "exposure.3", "gain.3"));
}

TEST_F(KorvexctlSelftest, AHeadWithoutColourPassesWithoutSnapshots) {
    m_head.color = false;
    const RequestedHead head(m_head);
    m_options.writeUserMemory = false;
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    EXPECT_THAT(With(outcome, "not run"),
                UnorderedElementsAre("exposure.2", "gain.2", "exposure.3", "gain.3",
                                     "user memory write", "snapshot", "infrared snapshot"));
    // A real head holds data there.
    EXPECT_THAT(head->GetJournal().Texts({"zr3DWriteUserInfomation"}), IsEmpty());
}

TEST_F(KorvexctlSelftest, ASmallHeadPassesAndKeepsItsUserMemory) {
    constexpr std::size_t kByteOfLastPage = 15 * 256 + 7;
    m_head.userMemory.at(kByteOfLastPage) = 0xA5;
    const RequestedHead head(m_head);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    const auto written = head->GetJournal().Texts({"zr3DWriteUserInfomation"});
    EXPECT_THAT(written, AllOf(::testing::SizeIs(2), Each(HasSubstr("(15, "))));
    const CommandResult page = RunHere({"user-info", "read", "15", "--hex"});
    EXPECT_EQ(page.output, "page 15: 00000000000000a5\n");
}

TEST_F(KorvexctlSelftest, FaultsFailExactlyTheirSteps) {
    const RequestedHead head(m_head);
    for (const char* call :
         {"GetSpecifyDeviceTreePath", "zr3DQueryFirmwareVersionFast", "zr3DSetProjectorBrightness",
          "zr3DSetIRLaserLevel", "zr3DOpenOrCloseStrobeFlicker", "zr3DSetDistanceIndicateState",
          "zr3DReadUserInfomation"}) {
        ASSERT_TRUE(head->GetFaults().Fail(call, 1)) << call;
    }
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::SelftestFailed);
    EXPECT_THAT(With(outcome, "FAILED"),
                UnorderedElementsAre("USB", "firmware", "projector-brightness", "ir-laser-level",
                                     "strobe", "distance", "user memory read"))
        << outcome.Document();
    EXPECT_THAT(outcome.message, HasSubstr("7 of "));
}

TEST_F(KorvexctlSelftest, ALossFailsTheScanThatItCameIn) {
    const RequestedHead head(m_head);
    ASSERT_TRUE(head->GetFaults().Order({virtual_head::FaultKind::LoseMono}));
    const Outcome outcome = Run();
    EXPECT_THAT(With(outcome, "FAILED"), UnorderedElementsAre("scan laser")) << outcome.Document();
}

TEST_F(KorvexctlSelftest, ACameraThatHangsFailsItsStepAndEndsTheRun) {
    const RequestedHead head(m_head);
    ASSERT_TRUE(head->GetFaults().Hang("GetExposureTime"));
    auto steps = korvexctl::SelftestSteps(m_options);
    for (Step& step : steps) {
        step.limit = std::chrono::seconds(step.name == "read settings" ? 1 : 100);
    }
    StepRun run(std::move(steps));
    const Outcome outcome = korvexctl::SelftestOutcome(run.Wait([](const StepRow&) {}), false);
    EXPECT_TRUE(run.Hangs());
    EXPECT_EQ(outcome.code, ExitCode::SelftestFailed);
    EXPECT_THAT(With(outcome, "FAILED"), UnorderedElementsAre("read settings"));
    EXPECT_EQ(With(outcome, "passed").size(), 4U);
    head->GetFaults().ReleaseHangs();
}

TEST_F(KorvexctlSelftest, LightThatStaysOnFailsEachStepThatLeavesIt) {
    virtual_head::TimedFault refusal;
    refusal.order.kind = virtual_head::FaultKind::Fail;
    refusal.order.call = "zr3DSetLaserEnable";
    refusal.order.times = 3;
    refusal.atTrigger = 1;
    m_head.faults = {refusal};
    const RequestedHead head(m_head);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::SelftestFailed);
    EXPECT_THAT(With(outcome, "FAILED"), Contains("scan laser")) << outcome.Document();
    for (const nlohmann::json& step : outcome.figures["steps"]) {
        if (step["verdict"] == "FAILED") {
            EXPECT_THAT(step["finding"].get<std::string>(),
                        HasSubstr("not switched off: laser lines"));
        }
    }
    // Once the board takes it, the light is off.
    EXPECT_THAT(With(outcome, "passed"), Contains("settings put back"));
}

/// The commands themselves, met by a signal.
class KorvexctlHealthInterrupt : public KorvexctlSelftest,
                                 public ::testing::WithParamInterface<const char*> {};

TEST_P(KorvexctlHealthInterrupt, IsAnsweredAtOnceAndCleansUp) {
    const RequestedHead head(m_head);
    ASSERT_TRUE(head->GetFaults().Hang("GetExposureTime"));
    const TemporaryFolder folder;
    const auto errorFile = folder.Path() / "error";
    const ErrorIntoFile errorIntoFile(errorFile);
    std::thread person([&] {
        EXPECT_TRUE(head->GetFaults().WaitForHang("GetExposureTime", std::chrono::minutes(1)));
        RaiseSignal(kInterrupt);
        EXPECT_TRUE(errorIntoFile.WaitForMessage());
        head->GetFaults().ReleaseHangs("GetExposureTime");
    });
    const CommandResult result = RunHere({GetParam()});
    person.join();
    EXPECT_THAT(ReadText(errorFile),
                HasSubstr("korvexctl: interrupted; stopping after the current step"));
    EXPECT_EQ(result.code, ExitCode::Interrupted);
    EXPECT_THAT(head->GetJournal().Texts({"zr3DExitHidDev"}), Not(IsEmpty()));
}

TEST_P(KorvexctlHealthInterrupt, BeforeItBeginsNothingIsDone) {
    const RequestedHead head(m_head);
    const korvexctl::EndingOnInterrupt ending;
    RaiseSignal(kInterrupt);
    ASSERT_TRUE(support::WaitUntil(korvexctl::InterruptCame));
    EXPECT_EQ(RunHere({GetParam()}).code, ExitCode::Interrupted);
    EXPECT_THAT(head->GetJournal().Texts({"zr3DInitHidDev"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Commands, KorvexctlHealthInterrupt,
                         ::testing::Values("doctor", "selftest"),
                         [](const auto& row) { return support::CaseName(row.param); });

TEST_F(KorvexctlSelftest, WithoutAHeadOnlyTheSearchFails) {
    virtual_head::WithdrawVirtualHead();
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::SelftestFailed);
    EXPECT_THAT(With(outcome, "FAILED"), UnorderedElementsAre("discovery", "USB", "firmware"));
    EXPECT_THAT(With(outcome, "passed"), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
