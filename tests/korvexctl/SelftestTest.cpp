#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/health/Selftest.h"
#include "korvexctl/health/StepRun.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using korvexctl::Step;
using korvexctl::StepRow;
using korvexctl::StepRun;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
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
    const test::RequestedHead head(m_head);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    EXPECT_EQ(outcome.figures["failed"], 0);
    // Orders that two sensors do not have.
    EXPECT_THAT(With(outcome, "not run"),
                UnorderedElementsAre("exposure.2", "gain.2", "exposure.3", "gain.3"));
}

TEST_F(KorvexctlSelftest, AHeadWithoutColourPassesWithoutSnapshots) {
    m_head.color = false;
    const test::RequestedHead head(m_head);
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
    const test::RequestedHead head(m_head);
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    const auto written = head->GetJournal().Texts({"zr3DWriteUserInfomation"});
    EXPECT_THAT(written, AllOf(::testing::SizeIs(2), Each(HasSubstr("(15, "))));
    const CommandResult page = RunHere({"user-info", "read", "15", "--hex"});
    EXPECT_EQ(page.output, "page 15: 00000000000000a5\n");
}

TEST_F(KorvexctlSelftest, FaultsFailExactlyTheirSteps) {
    const test::RequestedHead head(m_head);
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

TEST_F(KorvexctlSelftest, ACameraThatHangsFailsItsStepAndEndsTheRun) {
    const test::RequestedHead head(m_head);
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

TEST_F(KorvexctlSelftest, WithoutAHeadOnlyTheSearchFails) {
    virtual_head::WithdrawVirtualHead();
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.code, ExitCode::SelftestFailed);
    EXPECT_THAT(With(outcome, "FAILED"), UnorderedElementsAre("discovery", "USB", "firmware"));
    EXPECT_THAT(With(outcome, "passed"), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
