#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaMethod>

#include "platform/os/Process.h"
#include "service/ServiceClient.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using ::testing::ElementsAre;

using ClientObject = ServiceClient;

TEST_F(ClientObject, HasItsSlotsInTheirOrder) {
    const QMetaObject& meta = zr3DHandiSyncQT::staticMetaObject;
    EXPECT_STREQ(meta.className(), "Korvex3Sync::zr3DHandiSyncQT");
    std::vector<std::string> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot);
        methods.push_back(method.methodSignature().toStdString());
    }
    EXPECT_THAT(methods, ElementsAre("recvMessage(QString,QString,QVariantList,QString)",
                                     "recvCallback(QString,QString,QVariantList,QString)",
                                     "OnStatusTimerOut()", "OnCallbackTimerOut()",
                                     "OnDeviceServiceStateChanged(QProcess::ProcessState)",
                                     "ReConnect()", "StartStatusTimer(bool)", "StartStatusTimer()",
                                     "StartScanCallBackTimer(bool)", "StartScanCallBackTimer()"));
    const auto names = [](int slot) {
        return meta.method(meta.methodOffset() + slot).parameterNames();
    };
    EXPECT_EQ(names(0), (QList<QByteArray>{"pluginName", "msgName", "list", "verion"}));
    EXPECT_EQ(names(1), (QList<QByteArray>{"pluginName", "callbackName", "list", "verion"}));
    EXPECT_EQ(names(4), QList<QByteArray>{"newState"});
    EXPECT_EQ(names(6), QList<QByteArray>{"bStart"});
    EXPECT_EQ(names(8), QList<QByteArray>{"bStart"});
}

TEST_F(ClientObject, IgnoresItsParentAndLivesOnItsOwnThread) {
    QObject parent;
    m_client = std::make_unique<zr3DHandiSyncQT>(&parent);
    EXPECT_EQ(m_client->parent(), nullptr);
    EXPECT_NE(m_client->thread(), QThread::currentThread());
    EXPECT_TRUE(m_client->thread()->isRunning());
    EXPECT_NE(QMetaType::type("QProcess::ProcessState"), QMetaType::UnknownType);
}

/// What the constructor logs with a configuration file.
std::vector<std::string> LoggedConfiguration() {
    Output output;
    const zr3DHandiSyncQT client;
    return output.End();
}

TEST_F(ClientObject, UsesTheDefaultsWithoutAConfigurationFile) {
    EXPECT_TRUE(MatchesGolden("ServiceConfiguration", "no file", LoggedConfiguration()));
}

TEST_F(ClientObject, ReadsEachKeyOfItsGroup) {
    Configure({{"MaxReconnectCount", "-1"},
               {"CheckVideoPeriod", "101"},
               {"WaitTimeAfterRestartDevice", "102"},
               {"ReconnectPeriod", "103"},
               {"RestartProcessWaitTime", "104"},
               {"GetVideoPeriod", "105"},
               {"GetMaxNumOnStatusOffline", "106"},
               {"StatusTimeOut", "107"},
               {"StatusTimeOutNoticeMaxNum", "108"}});
    EXPECT_TRUE(MatchesGolden("ServiceConfiguration", "every key", LoggedConfiguration()));
}

TEST_F(ClientObject, ReadsZeroForWhatIsNoNumber) {
    Configure({{"StatusTimeOut", "soon"}, {"ReconnectPeriod", "5.0"}, {"GetVideoPeriod", ""}});
    EXPECT_TRUE(MatchesGolden("ServiceConfiguration", "no numbers", LoggedConfiguration()));
}

TEST_F(ClientObject, IgnoresOtherGroupsAndTheNameOfTheField) {
    WriteConfiguration(
        "[Other]\nMaxReconnectCount=1\n[Reconnect]\nMaxNumOnStatusOffline=2\nCheckVideoPeriod=3\n");
    EXPECT_TRUE(MatchesGolden("ServiceConfiguration", "other names", LoggedConfiguration()));
}

TEST_F(ClientObject, LeavesBothProcessesRunningAtItsEnd) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(support::WaitUntil(
        [] { return Journaled("hub.exe ") == 1 && Journaled("ZrSyncService.exe ") == 1; }));
    m_client.reset();
    for (const std::string& line : Journal()) {
        const std::string name = line.substr(0, line.find(' '));
        if (name.ends_with(".exe")) {
            const long number = std::stol(line.substr(name.size() + 1));
            EXPECT_TRUE(os::OtherProcess(number).Is(name)) << line;
        }
    }
    EXPECT_EQ(recorder::TheSyncInterface(), nullptr);
    for (const std::string& line : m_debug.Lines()) {
        EXPECT_FALSE(line.starts_with("warning")) << line;
    }
}

TEST_F(ClientObject, EndsWithoutWaitingForTheRestOfAReconnect) {
    Connect();
    const os::ScopedTimeScale realTime(1);
    QMetaObject::invokeMethod(m_client.get(), "ReConnect", Qt::QueuedConnection);
    ASSERT_TRUE(support::WaitUntil(
        [this] { return m_debug.Has("debug ReconnectCount = 0 MaxReconnectCount =  5"); }));
    const auto begin = std::chrono::steady_clock::now();
    m_client.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

}  // namespace
}  // namespace Korvex3Sync::tests
