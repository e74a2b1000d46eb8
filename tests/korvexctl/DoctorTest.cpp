#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Korvex3Sync/Light.h>

#include <cerrno>
#include <functional>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/health/Doctor.h"
#include "korvexctl/health/StepRun.h"
#include "os/FakeUsb.h"
#include "project/SourceTree.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

// More than a machine under load can fill.
constexpr int kManyBuffers = 4096;

virtual_head::HeadDescription PatientHead() {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.cameraBuffers = kManyBuffers;
    return description;
}

class KorvexctlDoctor : public ::testing::Test {
protected:
    KorvexctlDoctor() {
        m_options.machine = m_usb.Machine();
        m_options.trialImageSets = 20;
        m_options.trialLimit = std::chrono::seconds(60);
    }

    Outcome Examine() {
        auto steps = korvexctl::DoctorSteps(m_options);
        for (korvexctl::Step& step : steps) {
            step.limit = std::chrono::seconds(100);
        }
        korvexctl::StepRun run(std::move(steps));
        return korvexctl::DoctorOutcome(run.Wait([](const korvexctl::StepRow&) {}), false);
    }

    static nlohmann::json Check(const Outcome& outcome, const std::string& name) {
        for (const nlohmann::json& check : outcome.figures["checks"]) {
            if (check["name"] == name) {
                return check;
            }
        }
        ADD_FAILURE() << "no check " << name;
        return {};
    }

    static std::vector<std::string> With(const Outcome& outcome, const std::string& verdict) {
        std::vector<std::string> names;
        for (const nlohmann::json& check : outcome.figures["checks"]) {
            if (check["verdict"] == verdict) {
                names.push_back(check["name"]);
            }
        }
        return names;
    }

    FakeUsb m_usb;
    korvexctl::DoctorOptions m_options;
};

TEST_F(KorvexctlDoctor, AHealthyHeadCanScan) {
    const RequestedHead head(PatientHead());
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.Document();
    EXPECT_EQ(outcome.figures["healthy"], true);
    EXPECT_EQ(outcome.figures["simulated"], true);
    EXPECT_THAT(With(outcome, "not checked"), UnorderedElementsAre("permissions"));
    EXPECT_EQ(With(outcome, "ok").size(), outcome.figures["checks"].size() - 1);
    EXPECT_THAT(Check(outcome, "head")["finding"], HasSubstr("SIMULATED"));
    EXPECT_EQ(Check(outcome, "firmware")["finding"], "1.4.0");
    EXPECT_THAT(Check(outcome, "cameras")["finding"], HasSubstr("2, 64 x 48, colour"));
    const nlohmann::json trial = Check(outcome, "trial scan")["figures"];
    EXPECT_GE(trial["sets"], 20);
    EXPECT_EQ(trial["with_color"], trial["sets"]);
    EXPECT_EQ(trial["losses"]["missing_keys"], 0);
}

TEST_F(KorvexctlDoctor, SettingsStandAsTheyWereFound) {
    const RequestedHead head(PatientHead());
    const auto with = [](const std::function<void(void* const&)>& call) {
        const korvexctl::ConnectedHead connected{korvexctl::HeadChoice{}};
        call(connected.Handle());
    };
    with([](void* const& handle) {
        EXPECT_EQ(SetLaserLineDutioRatio(handle, 37), STATUS_SUCCESS);
        EXPECT_EQ(SetVideoTriggerPeriod(handle, 123), STATUS_SUCCESS);
    });
    EXPECT_EQ(Examine().code, ExitCode::Done);
    with([](void* const& handle) {
        int duty = 0;
        int period = 0;
        EXPECT_EQ(GetLaserLineDutioRatio(handle, duty), STATUS_SUCCESS);
        EXPECT_EQ(GetVideoTriggerPeriod(handle, period), STATUS_SUCCESS);
        EXPECT_EQ(duty, 37);
        EXPECT_EQ(period, 123);
    });
    // The trial did change them.
    EXPECT_THAT(head->GetJournal().Texts({"zr3DSetVideoTriggerPeriod"}),
                IsSupersetOf({"zr3DSetVideoTriggerPeriod(10) = true"}));
}

TEST_F(KorvexctlDoctor, AHeadOnUsb2IsNamedAsTheFaultWithWhatToDo) {
    virtual_head::HeadDescription description = PatientHead();
    description.usbSpeed = 3;
    const RequestedHead head(description);
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy);
    EXPECT_EQ(outcome.message, "cannot scan: USB speed");
    const nlohmann::json speed = Check(outcome, "USB speed");
    EXPECT_THAT(speed["finding"], HasSubstr("USB 2"));
    EXPECT_THAT(speed["advice"], HasSubstr("USB 3 port"));
    EXPECT_EQ(Check(outcome, "trial scan")["verdict"], "ok");
}

TEST_F(KorvexctlDoctor, WithoutAHeadNothingThatNeedsOneIsChecked) {
    virtual_head::WithdrawVirtualHead();
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy);
    EXPECT_EQ(outcome.figures["simulated"], false);
    EXPECT_EQ(outcome.figures["can_scan"], false);
    EXPECT_EQ(outcome.message, "cannot scan: head");
    EXPECT_THAT(With(outcome, "FAULT"), UnorderedElementsAre("head"));
    EXPECT_EQ(With(outcome, "not checked").size(), outcome.figures["checks"].size() - 1);
    EXPECT_THAT(Check(outcome, "head")["finding"], HasSubstr("no driver for real cameras"));
    EXPECT_THAT(Check(outcome, "head")["advice"], HasSubstr("use --virtual"));
    EXPECT_EQ(Check(outcome, "firmware")["finding"], "no board");
}

TEST_F(KorvexctlDoctor, ABoardThatThisUserMayNotOpenIsNamedWithTheRule) {
    virtual_head::WithdrawVirtualHead();
    m_usb.AddBoard("2-1.4", 480, "/dev/hidraw3");
    m_options.machine = m_usb.Machine(EACCES);
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy);
    const nlohmann::json permissions = Check(outcome, "permissions");
    EXPECT_EQ(permissions["verdict"], "FAULT");
    EXPECT_THAT(permissions["finding"], AllOf(HasSubstr("hidraw3"), HasSubstr("ermission denied")));
    EXPECT_THAT(permissions["advice"], HasSubstr("/etc/udev/rules.d/70-korvex3sync.rules, "));
    EXPECT_THAT(permissions["advice"],
                ::testing::EndsWith(":\n" + ReadProjectFile("packaging/70-korvex3sync.rules")));
    EXPECT_THAT(Check(outcome, "board")["finding"], HasSubstr("USB port 2-1.4"));
    EXPECT_EQ(Check(outcome, "USB speed")["verdict"], "FAULT");
}

TEST_F(KorvexctlDoctor, ABoardThatOpensAndDoesNotAnswerIsAFault) {
    const RequestedHead head(PatientHead());
    for (const char* call :
         {"zr3DQueryFirmwareVersionFast", "zr3DQueryCurrentStatus", "zr3DQueryTriggerPeriod"}) {
        ASSERT_TRUE(head->GetFaults().Fail(call, 1));
    }
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy);
    EXPECT_THAT(With(outcome, "FAULT"), UnorderedElementsAre("firmware", "answers"));
    EXPECT_THAT(Check(outcome, "answers")["finding"], HasSubstr("does not answer"));
    EXPECT_EQ(Check(outcome, "trial scan")["verdict"], "not checked");
    EXPECT_EQ(Check(outcome, "disconnect")["verdict"], "ok");
}

virtual_head::TimedFault AtTrigger(std::uint64_t trigger, virtual_head::FaultKind kind) {
    virtual_head::TimedFault fault;
    fault.order.kind = kind;
    fault.atTrigger = trigger;
    return fault;
}

TEST_F(KorvexctlDoctor, LostFramesAreNamedWithTheirPlace) {
    virtual_head::HeadDescription description = PatientHead();
    description.faults = {AtTrigger(2, virtual_head::FaultKind::LoseBoth)};
    const RequestedHead head(description);
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::Warnings) << outcome.Document();
    EXPECT_EQ(outcome.message, "can scan, with warnings: trial scan");
    const nlohmann::json trial = Check(outcome, "trial scan");
    EXPECT_THAT(trial["finding"], HasSubstr("triggers without a set"));
    EXPECT_THAT(trial["advice"], HasSubstr("USB connection"));
    EXPECT_GT(trial["figures"]["losses"]["missing_keys"], 0);
}

TEST_F(KorvexctlDoctor, AHeadThatStopsDeliveringIsAFaultWhateverElseWasLost) {
    virtual_head::HeadDescription description = PatientHead();
    description.faults = {AtTrigger(2, virtual_head::FaultKind::LoseBoth),
                          AtTrigger(8, virtual_head::FaultKind::CameraStop)};
    const RequestedHead head(description);
    m_options.trialLimit = std::chrono::seconds(5);
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy) << outcome.Document();
    EXPECT_EQ(outcome.message, "cannot scan: trial scan");
    EXPECT_EQ(outcome.figures["can_scan"], false);
    const nlohmann::json trial = Check(outcome, "trial scan");
    EXPECT_THAT(trial["finding"],
                AllOf(HasSubstr("; expected 20; lost: "), HasSubstr("triggers without a set")));
    EXPECT_THAT(trial["advice"], AllOf(HasSubstr("stopped delivering"), HasSubstr("cable")));
}

TEST_F(KorvexctlDoctor, ATriggerThatStaysOnIsAFault) {
    virtual_head::HeadDescription description = PatientHead();
    virtual_head::TimedFault refusal = AtTrigger(1, virtual_head::FaultKind::Fail);
    refusal.order.call = "zr3DSetVideoTrigleMode";
    refusal.order.times = 2;
    description.faults = {refusal};
    const RequestedHead head(description);
    const Outcome outcome = Examine();
    EXPECT_EQ(outcome.code, ExitCode::NotHealthy) << outcome.Document();
    EXPECT_EQ(Check(outcome, "settings put back")["finding"], "not switched off: trigger");
}

TEST_F(KorvexctlDoctor, ARefusedSettingFailsTheTrialOnly) {
    const RequestedHead head(PatientHead());
    ASSERT_TRUE(head->GetFaults().Fail("zr3DSetLaserEnable", 1));
    const Outcome outcome = Examine();
    EXPECT_THAT(With(outcome, "FAULT"), UnorderedElementsAre("trial scan"));
    EXPECT_THAT(Check(outcome, "trial scan")["finding"], HasSubstr("laser lines"));
}

TEST(KorvexctlDoctorProgram, WithoutAHeadOneCauseGivesOneMessage) {
    const ChildResult result = RunKorvexctl({"doctor"});
    EXPECT_EQ(result.exitCode, 13);
    // No log line beside it.
    EXPECT_EQ(result.error, "korvexctl: cannot scan: head\n");
    EXPECT_THAT(result.output, AllOf(HasSubstr("FAULT        head"), Not(HasSubstr("cable"))));
}

TEST_F(KorvexctlDoctor, TheBoardIsNamedWithItsSerial) {
    const RequestedHead head(PatientHead());
    EXPECT_EQ(Check(Examine(), "board")["finding"], "found, serial VH3267-0001; it is simulated");
}

TEST_F(KorvexctlDoctor, TheProgramPrintsOnePageAndItsVerdict) {
    const TemporaryFolder folder;
    const auto file = WriteSmallHead(folder.Path(), "[board]\nusb_speed = 3\n");
    const ChildResult result = RunKorvexctl({"--virtual=" + file.string(), "doctor"});
    EXPECT_EQ(result.exitCode, 13);
    EXPECT_THAT(result.output, HasSubstr("FAULT        USB speed"));
    EXPECT_THAT(result.error, HasSubstr("korvexctl: cannot scan: USB speed"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
