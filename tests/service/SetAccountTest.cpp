#include "service/SetAccount.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/include/ImageSetNotice.h"
#include "service/ServiceClient.h"

namespace Korvex3Sync::tests {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t kDevice = 77;

/// A notice as our service sends it.
struct Sent {
    std::uint64_t number = 1;
    std::uint64_t notWritten = 0;
    std::uint64_t notSent = 0;
    ScanStatistics figures;
    std::int64_t device = kDevice;
    const char* kind = "ColorImage";

    QList<QVariant> List(const QStringList& segments = {"a", "b", "c"}) const {
        QVariantList all;
        for (const notice::Figure& figure : notice::kDirectModeFigures) {
            all.append(QVariant::fromValue<qulonglong>(figures.*figure.member));
        }
        return {QVariant(),
                QVariant(),
                kind,
                segments,
                1,
                QVariant::fromValue<qulonglong>(number),
                QVariant::fromValue<qulonglong>(notWritten),
                QVariant::fromValue<qulonglong>(notSent),
                QVariant(all),
                true,
                QVariant::fromValue<qlonglong>(device)};
    }
};

/// What the service counts when its set `number` is on its way, with `missing` triggers lost in
/// front of it and another set waiting behind it.
Sent Nth(std::uint64_t number, std::uint64_t missing = 0) {
    Sent sent;
    sent.number = number;
    sent.figures.setsDelivered = number - 1;
    sent.figures.setsPending = 2;
    sent.figures.missingKeys = missing;
    return sent;
}

std::uint64_t Triggers(const ScanStatistics& s) {
    return s.setsDelivered - s.repeatedKeys + s.missingKeys + s.setsWithoutCallback +
           s.setsDropped + s.setsPending + s.setsNotWritten + s.setsOverwritten + s.noticesLost;
}

TEST(SetAccount, EverySetIsCountedOnceWhereItEnded) {
    SetAccount account;
    account.Begin(kDevice);
    account.SetEnded(Nth(1).List(), SetFate::Delivered, milliseconds(1));
    account.SetEnded(Nth(2).List(), SetFate::Unreadable, std::nullopt);
    account.SetEnded(Nth(3).List(), SetFate::WithoutCallback, std::nullopt);
    account.SetEnded(Nth(4).List(), SetFate::NoMemory, std::nullopt);
    Sent fifth = Nth(10, 3);  // 5 and 6 were not written, of 7, 8 and 9 came no notice
    fifth.notWritten = 2;
    fifth.notSent = 1;
    fifth.kind = "GrayImage";
    account.SetEnded(fifth.List(), SetFate::Delivered, milliseconds(1));
    const ScanStatistics s = account.Read();
    EXPECT_EQ(s.setsDelivered, 2U);
    EXPECT_EQ(s.setsWithColor, 1U);
    EXPECT_EQ(s.setsOverwritten, 1U);
    EXPECT_EQ(s.setsWithoutCallback, 1U);
    EXPECT_EQ(s.setsDropped, 1U);
    EXPECT_EQ(s.setsNotWritten, 2U);
    EXPECT_EQ(s.noticesLost, 3U);
    EXPECT_EQ(s.missingKeys, 3U);
    EXPECT_EQ(s.setsPending, 1U);
    EXPECT_EQ(Triggers(s), 10U + 3U + 1U);
    EXPECT_EQ(s.serviceReconnects, 0U);
}

TEST(SetAccount, TakesOverEveryFigureOfTheService) {
    SetAccount account;
    account.Begin(kDevice);
    Sent sent;
    std::uint64_t next = 100;
    for (const notice::Figure& figure : notice::kDirectModeFigures) {
        sent.figures.*figure.member = ++next;
    }
    sent.figures.setsDelivered = 0;
    account.SetEnded(sent.List(), SetFate::Delivered, milliseconds(5));
    const ScanStatistics s = account.Read();
    for (const notice::Figure& figure : notice::kDirectModeFigures) {
        const std::string name = figure.name;
        const std::uint64_t expected = name == "setsDelivered" || name == "setsWithColor" ? 1
                                       : name == "setsPending" ? sent.figures.setsPending - 1
                                                               : sent.figures.*figure.member;
        if (!name.starts_with("callback")) {
            EXPECT_EQ(s.*figure.member, expected) << name;
        }
    }
    EXPECT_EQ(s.callbackLongestUs, 5000U) << "the time of this process, not of the service";
    EXPECT_GE(s.callbackP50Us, 5000U);
    EXPECT_GE(s.callbackP99Us, s.callbackP50Us);
}

TEST(SetAccount, ContinuesOverAReconnectionAndMeasuresTheGap) {
    SetAccount account;
    account.Begin(kDevice);
    account.SetEnded(Nth(4, 2).List(), SetFate::Delivered, std::nullopt);
    std::this_thread::sleep_for(milliseconds(20));
    account.Continue(78);
    EXPECT_EQ(account.Read().serviceReconnects, 0U) << "it may still fail";
    account.Continue(79);
    account.Reconnected();
    ScanStatistics s = account.Read();
    EXPECT_EQ(s.serviceReconnects, 1U);
    EXPECT_GE(s.serviceGapMs, 20U);
    EXPECT_EQ(s.setsPending, 0U) << "it ended with the service";
    const std::uint64_t gap = s.serviceGapMs;

    Sent late = Nth(5);  // of the device before
    account.SetEnded(late.List(), SetFate::Delivered, std::nullopt);
    Sent again = Nth(2, 1);
    again.device = 79;
    account.SetEnded(again.List(), SetFate::Delivered, std::nullopt);
    s = account.Read();
    EXPECT_EQ(s.setsDelivered, 2U);
    EXPECT_EQ(s.noticesLost, 3U + 1U);
    EXPECT_EQ(s.missingKeys, 3U);
    EXPECT_EQ(s.serviceGapMs, gap);
    EXPECT_EQ(s.setsPending, 1U);
}

TEST(SetAccount, StartsAgainWithTheNextConnect) {
    SetAccount account;
    account.Begin(kDevice);
    account.SetEnded(Nth(4, 2).List(), SetFate::Delivered, milliseconds(3));
    account.Continue(78);
    account.Reconnected();
    account.Begin(79);
    const ScanStatistics s = account.Read();
    EXPECT_EQ(Triggers(s), 0U);
    EXPECT_EQ(s.serviceReconnects, 0U);
    EXPECT_EQ(s.serviceGapMs, 0U);
    EXPECT_EQ(s.callbackLongestUs, 0U);
}

TEST(SetAccount, NoticesOfAnotherMakeCountAsFarAsTheyGo) {
    SetAccount account;
    account.Begin(kDevice);
    account.SetEnded({QVariant(), QVariant(), "GrayImage", QStringList{"a", "b"}, 1},
                     SetFate::Delivered, std::nullopt);
    const ScanStatistics s = account.Read();
    EXPECT_EQ(s.setsDelivered, 1U);
    EXPECT_EQ(s.setsWithColor, 0U);
    EXPECT_EQ(s.noticesLost, 0U);
    EXPECT_EQ(s.setsPending, 0U);
}

/// Through the client.
class ServiceStatistics : public ServiceClient {};

TEST_F(ServiceStatistics, ComeWithTheSets) {
    Configure({{"RestartProcessWaitTime", "1000000"}});  // no watchdog ends during the test
    const QStringList segments{"s1", "s2", "s3"};
    for (const QString& segment : segments) {
        recorder::SetSegment(segment, QByteArray(1280 * 1024, 1));
    }
    ScanStatistics s;
    s.missingKeys = 99;
    MakeClient();
    EXPECT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_NOT_CONNECTED);
    EXPECT_EQ(s.missingKeys, 99U);
    m_client.reset();
    Connect();
    ASSERT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_SUCCESS);
    EXPECT_EQ(Triggers(s), 0U);

    SendCallback(Nth(3, 1).List(segments));
    Settle();
    ASSERT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_SUCCESS);
    EXPECT_EQ(s.missingKeys, 1U);
    EXPECT_EQ(s.noticesLost, 2U);
    EXPECT_EQ(s.setsWithoutCallback, 1U);

    SendCallback(Nth(4, 1).List({"gone", "s2", "s3"}));
    Settle();
    ASSERT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_SUCCESS);
    EXPECT_EQ(s.setsOverwritten, 1U);
    EXPECT_EQ(s.setsDelivered, 0U);

    RunSlot("ReConnect");
    Settle();
    ASSERT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_SUCCESS);
    EXPECT_EQ(s.serviceReconnects, 1U);
    EXPECT_EQ(s.missingKeys, 1U);
    ASSERT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_SUCCESS);
    ASSERT_EQ(m_client->GetScanStatistics(m_handle, s), STATUS_SUCCESS);
    EXPECT_EQ(s.serviceReconnects, 0U);
    EXPECT_EQ(Triggers(s), 0U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
