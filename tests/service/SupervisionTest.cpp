#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

#include <array>

#include "os/Sleeper.h"
#include "platform/os/Clock.h"
#include "platform/os/Descriptors.h"
#include "platform/os/Process.h"
#include "service/ServiceClient.h"
#include "support/BlockingCall.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;
using recorder::Recorder;
using std::chrono::milliseconds;
using support::MatchesGolden;
using support::Output;
using support::WaitUntil;
using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr char kNotRunning[] =
    "critical \n\n#####\nDeviceServiceProcess state changed: 0\n######\n\n";

class Supervision : public ServiceClient {
protected:
    /// The process number in the last line of this program.
    static long NumberOf(const std::string& program) {
        long number = 0;
        for (const std::string& line : Journal()) {
            if (line.starts_with(program + " ")) {
                number = std::stol(line.substr(program.size() + 1));
            }
        }
        return number;
    }
    static testing::AssertionResult BothStarted(std::size_t services = 1) {
        const bool started = WaitUntil([services] {
            return Journaled("hub.exe ") == 1 && Journaled("ZrSyncService.exe ") == services;
        });
        return testing::AssertionResult(started) << testing::PrintToString(Journal());
    }
    /// A process of an earlier host.
    static std::unique_ptr<Sleeper> Stale(const std::string& name) {
        const fs::path program = Folder() / "earlier" / name;
        fs::create_directories(program.parent_path());
        fs::remove(program);
        return std::make_unique<Sleeper>(SleeperAs(program));
    }
};

TEST_F(Supervision, StartsScriptsHubAndServiceInTheirFolders) {
    Output output(Output::Of::kOtherThreads);
    EXPECT_TRUE(Start());
    EXPECT_TRUE(MatchesGolden("ServiceStart", "first start", output.End()));
    ASSERT_TRUE(BothStarted());
    const std::vector<std::string> journal = Journal();
    ASSERT_THAT(journal, SizeIs(4));
    const std::string current = fs::current_path().string();
    EXPECT_EQ(journal[0], "restart_VID0219_PID0813_REV0221.bat 0 " + current);
    EXPECT_EQ(journal[1], "restart_VID05E3_PID0620_REV2307.bat 0 " + current);
    const std::string end = " 0 " + Folder().string();
    EXPECT_TRUE(journal[2].ends_with(end)) << journal[2];
    EXPECT_TRUE(journal[3].ends_with(end)) << journal[3];
    EXPECT_THAT(Recorder::Get().CallsInOrder(),
                ElementsAre("SyncInterface()", "getCamerasInformation(KV00)"));
}

TEST_F(Supervision, TellsInTheDebugChannelToo) {
    ASSERT_TRUE(Start());
    std::vector<std::string> lines = m_debug.Lines();
    EXPECT_TRUE(MatchesGolden("ServiceStart", "debug channel", lines));
}

TEST_F(Supervision, PausesBetweenItsSteps) {
    MakeClient();
    const os::ScopedTimeScale slower(0.2);
    auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_client->Init());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, os::Scaled(milliseconds(13500)));
    begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_client->Init());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, os::Scaled(milliseconds(13000)));
}

TEST_F(Supervision, EndsProcessesOfAnEarlierHostFirst) {
    const auto hub = Stale("hub.exe");
    const auto service = Stale("ZrSyncService.exe");
    const auto other = Stale("other.exe");
    EXPECT_TRUE(Start());
    EXPECT_FALSE(os::OtherProcess(hub->Number()).Runs());
    EXPECT_FALSE(os::OtherProcess(service->Number()).Runs());
    EXPECT_TRUE(os::OtherProcess(other->Number()).Runs());
}

TEST_F(Supervision, EndsScriptsOfAnEarlierHostFirst) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(BothStarted());
    const os::OtherProcess hub(NumberOf("hub.exe"));
    const os::OtherProcess service(NumberOf("ZrSyncService.exe"));
    zr3DHandiSyncQT next;
    EXPECT_TRUE(next.Init());
    EXPECT_FALSE(hub.Runs());
    EXPECT_FALSE(service.Runs());
}

TEST_F(Supervision, NeverEndsTheHostItself) {
    const fs::path program = QCoreApplication::applicationFilePath().toStdString();
    ASSERT_TRUE(os::OtherProcess(os::CurrentProcess()).Is(program.filename().string()));
    os::EndProcesses(program.filename().string());
    EXPECT_TRUE(os::OtherProcess(os::CurrentProcess()).Runs());
}

TEST_F(Supervision, ASecondStartKeepsTheHubAndRestartsTheService) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(BothStarted());
    RunSlot("StartStatusTimer", true);
    const os::OtherProcess hub(NumberOf("hub.exe"));
    const os::OtherProcess service(NumberOf("ZrSyncService.exe"));
    const auto other = Stale("hub.exe");
    SyncInterface* const link = recorder::TheSyncInterface();
    Output output(Output::Of::kOtherThreads);
    EXPECT_TRUE(m_client->Init());
    Settle();
    EXPECT_TRUE(MatchesGolden("ServiceStart", "second start", output.End()));
    ASSERT_TRUE(BothStarted(2));
    EXPECT_TRUE(hub.Runs());
    EXPECT_TRUE(os::OtherProcess(other->Number()).Runs());
    EXPECT_TRUE(service.WaitForEnd(milliseconds(60000)));
    EXPECT_EQ(Journaled("restart_"), 4U);
    EXPECT_EQ(recorder::TheSyncInterface(), link);
    EXPECT_FALSE(Timer(kStatusTimer).active);
}

TEST_F(Supervision, SignalsOfTheLinkAreNotConnectedTwice) {
    Connect();
    ASSERT_TRUE(m_client->Init());
    static std::atomic<int> statuses;
    statuses = 0;
    ASSERT_EQ(m_client->SetStatusCallBackFunction(
                  m_handle,
                  [](const void* const&, const unsigned char& status, const unsigned char&) {
                      statuses += status == 7 ? 1 : 0;
                  },
                  this),
              STATUS_SUCCESS);
    SendStatus("7", 0);
    Settle();
    EXPECT_EQ(statuses, 1);
    m_client.reset();
}

TEST_F(Supervision, TheEndOfTheServiceIsLoggedAndNothingElse) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(BothStarted());
    Output output(Output::Of::kOtherThreads);
    ASSERT_TRUE(os::OtherProcess(NumberOf("ZrSyncService.exe")).Kill());
    ASSERT_TRUE(WaitUntil([this] { return m_debug.Has(kNotRunning); }));
    Settle();
    EXPECT_TRUE(MatchesGolden("ServiceStart", "the service ends", output.End()));
    EXPECT_EQ(Journaled("ZrSyncService.exe "), 1U);
}

TEST_F(Supervision, OtherStatesOfTheServiceAreNotLogged) {
    MakeClient();
    for (const auto state : {QProcess::Starting, QProcess::Running}) {
        OnWorker([&] {
            EXPECT_TRUE(QMetaObject::invokeMethod(m_client.get(), "OnDeviceServiceStateChanged",
                                                  Q_ARG(QProcess::ProcessState, state)));
        });
    }
    EXPECT_THAT(m_debug.Lines(), testing::IsEmpty());
}

TEST_F(Supervision, AServiceThatPrintsMuchIsNotBlocked) {
    constexpr std::size_t kMuch = 1'000'000;
    WriteProgram("ZrSyncService.exe", {.errorBytes = kMuch, .line = "", .journal = "said"});
    WriteProgram("hub.exe",
                 {.outputBytes = kMuch, .errorBytes = kMuch, .line = "", .journal = "said"});
    ASSERT_TRUE(Start());
    EXPECT_TRUE(WaitUntil([] { return Journaled("said") == 2; }));
}

TEST_F(Supervision, StandardOutputOfTheServiceIsThatOfTheHost) {
    WriteProgram("ZrSyncService.exe", {.line = "from the service", .journal = "said"});
    Output output(Output::Of::kThisThread);
    EXPECT_TRUE(Start());
    EXPECT_TRUE(WaitUntil([] { return Journaled("said") == 1; }));
    EXPECT_TRUE(MatchesGolden("ServiceStart", "the service prints", output.End()));
}

TEST_F(Supervision, ItsProcessesKeepNoFileOfTheHostOpen) {
    std::array<int, 2> pipe{};
    ASSERT_TRUE(os::MakePipe(pipe));
    const int inherited = os::OpenNothing();
    ASSERT_TRUE(os::RedirectDescriptor(pipe[1], inherited));
    os::CloseDescriptor(pipe[1]);
    EXPECT_TRUE(Start());
    ASSERT_TRUE(BothStarted());
    os::CloseDescriptor(inherited);
    char byte = 0;
    std::ptrdiff_t read = -1;
    const os::OtherProcess hub(NumberOf("hub.exe"));
    const os::OtherProcess service(NumberOf("ZrSyncService.exe"));
    {
        const support::BlockingCall end([&] { read = os::ReadDescriptor(pipe[0], &byte, 1); });
        EXPECT_TRUE(end.WaitUntilReturned()) << "somebody could still write into the pipe";
        EXPECT_TRUE(hub.Runs());
        EXPECT_TRUE(service.Runs());
        hub.Kill();  // then it returns in any case
        service.Kill();
    }
    EXPECT_EQ(read, 0);
    os::CloseDescriptor(pipe[0]);
}

TEST_F(Supervision, AHubThatDoesNotStartIsNotTriedAgain) {
    fs::remove(Folder() / "hub.exe");
    {
        Output output(Output::Of::kOtherThreads);
        EXPECT_FALSE(Start());
        EXPECT_TRUE(MatchesGolden("ServiceStart", "no hub", output.End()));
    }
    EXPECT_TRUE(m_debug.Has("debug startScanServiceProcess failed"));
    EXPECT_EQ(recorder::TheSyncInterface(), nullptr);
    EXPECT_EQ(Journaled("ZrSyncService.exe "), 0U);
    WriteProgram("hub.exe", {.line = "", .journal = "hub.exe", .waits = false});
    const auto stale = Stale("hub.exe");
    EXPECT_TRUE(m_client->Init());
    EXPECT_TRUE(WaitUntil([] { return Journaled("ZrSyncService.exe ") == 1; }));
    EXPECT_EQ(Journaled("hub.exe"), 0U);
    EXPECT_TRUE(os::OtherProcess(stale->Number()).Runs());
}

TEST_F(Supervision, AServiceThatDoesNotStartIsTriedAgain) {
    fs::rename(Folder() / "ZrSyncService.exe", Folder() / "away");
    {
        Output output(Output::Of::kOtherThreads);
        EXPECT_FALSE(Start());
        EXPECT_TRUE(MatchesGolden("ServiceStart", "no service", output.End()));
    }
    EXPECT_EQ(recorder::TheSyncInterface(), nullptr);
    fs::rename(Folder() / "away", Folder() / "ZrSyncService.exe");
    EXPECT_TRUE(m_client->Init());
    EXPECT_TRUE(BothStarted());
}

TEST_F(Supervision, WithoutCamerasTheStartFailsAndTheLinkStays) {
    Recorder::Get().SetValue("count", 0);
    EXPECT_FALSE(Start());
    Recorder::Get().SetValue("count", 2);
    EXPECT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_SUCCESS);
}

TEST_F(Supervision, MissingScriptsDoNotHoldUpTheStart) {
    fs::remove_all(fs::current_path() / "restart_VID0219_PID0813_REV0221.bat");
    fs::remove_all(fs::current_path() / "restart_VID05E3_PID0620_REV2307.bat");
    EXPECT_TRUE(Start());
    EXPECT_EQ(Journaled("restart_"), 0U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
