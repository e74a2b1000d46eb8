#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "service/ServiceClient.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kFrame = 1280 * 1024;

struct Status {
    int status;
    int value;
    bool operator==(const Status&) const = default;
};

struct Set {
    std::vector<unsigned char*> addresses;
    std::vector<int> first;  // first and last byte of each image
    std::vector<int> last;
    int width;
    int height;
    std::vector<int> values;
};

/// What the callbacks got; its address is the context.
struct Received {
    std::vector<Status> statuses;
    std::vector<Set> sets;
    std::function<void()> during;

    static void OnStatus(const void* const& context, const unsigned char& status,
                         const unsigned char& value) {
        Received& self = Of(context);
        self.statuses.push_back({status, value});
        if (self.during) {
            self.during();
        }
    }
    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>& values) {
        Received& self = Of(context);
        Set set{images, {}, {}, width, height, values};
        for (const unsigned char* const image : images) {
            set.first.push_back(image[0]);
            set.last.push_back(image[kFrame * values[0] - 1]);
        }
        self.sets.push_back(set);
        if (self.during) {
            self.during();
        }
    }

private:
    static Received& Of(const void* context) {
        return *static_cast<Received*>(const_cast<void*>(context));
    }
};

/// A connected client with both callbacks. The callbacks run on the worker thread, and a test reads
/// what they got after Settle.
class Delivery : public ServiceClient {
protected:
    void SetUp() override {
        // No watchdog ends during a test.
        Configure({{"StatusTimeOut", "1000000"}, {"RestartProcessWaitTime", "1000000"}});
        Connect();
        ASSERT_EQ(m_client->SetStatusCallBackFunction(m_handle, Received::OnStatus, &m_received),
                  STATUS_SUCCESS);
        ASSERT_EQ(m_client->SetScanCallBackFunction(m_handle, Received::OnSet, &m_received),
                  STATUS_SUCCESS);
        for (int i = 1; i <= 4; ++i) {
            recorder::SetSegment("s" + QString::number(i),
                                 QByteArray(kFrame, static_cast<char>(i)));
        }
        m_calls = Recorder::Get().CallsInOrder().size();
    }
    ~Delivery() override { m_client.reset(); }

    std::vector<std::string> NewCalls() {
        const std::vector<std::string> calls = Recorder::Get().CallsInOrder();
        return {calls.begin() + static_cast<std::ptrdiff_t>(m_calls), calls.end()};
    }

    Received m_received;
    std::size_t m_calls = 0;
};

TEST_F(Delivery, StatusIsANumberAndAValueOfEightBits) {
    SendStatus("7", 300);
    SendStatus("259", -1);
    SendStatus("none", 5);
    SendStatus("-1", 0);
    Settle();
    EXPECT_THAT(m_received.statuses,
                ElementsAre(Status{7, 44}, Status{3, 255}, Status{0, 5}, Status{0, 0}));
}

TEST_F(Delivery, ConnectedIsNoStatus) {
    SendStatus("Connected", 1);
    Settle();
    EXPECT_THAT(m_received.statuses, IsEmpty());
    EXPECT_FALSE(Timer(kStatusTimer).active);
}

TEST_F(Delivery, AShortStatusMessageIsIgnored) {
    SendMessage({});
    SendMessage({"first", 2, "7"});
    Settle();
    EXPECT_THAT(m_received.statuses, IsEmpty());
    EXPECT_FALSE(Timer(kStatusTimer).active);
}

TEST_F(Delivery, AStatusMessageMayCarryMore) {
    SendMessage({"first", 2, "7", 8, "more", 9});
    Settle();
    EXPECT_THAT(m_received.statuses, ElementsAre(Status{7, 8}));
    EXPECT_TRUE(Timer(kStatusTimer).active);
}

TEST_F(Delivery, AGraySetIsCopiedFromItsSegments) {
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    ASSERT_EQ(m_received.sets.size(), 1U);
    const Set& set = m_received.sets[0];
    EXPECT_THAT(set.first, ElementsAre(1, 2));
    EXPECT_THAT(set.last, ElementsAre(1, 2));
    EXPECT_THAT(set.values, ElementsAre(1, 1));
    EXPECT_EQ(set.width, 1280);
    EXPECT_EQ(set.height, 1024);
    EXPECT_THAT(NewCalls(),
                ElementsAre("open(ZrSyncService_SharedMemory, 1024)", "segment(s1, 0)", "lock(s1)",
                            "read(s1, 1310720)", "unlock(s1)", "destroy(s1)", "segment(s2, 0)",
                            "lock(s2)", "read(s2, 1310720)", "unlock(s2)", "destroy(s2)"));
}

TEST_F(Delivery, BuffersAreReusedAndOtherKindsHaveThreeImages) {
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    SendNotice("ColorImage", {"s2", "s3"}, 1);
    SendNotice("ColorImage", {"s4", "s3", "s1"}, 1);
    Settle();
    ASSERT_EQ(m_received.sets.size(), 3U);
    EXPECT_THAT(m_received.sets[1].first, ElementsAre(2, 3, 0));  // never written
    EXPECT_THAT(m_received.sets[1].values, ElementsAre(1, 1, 1));
    EXPECT_THAT(m_received.sets[2].first, ElementsAre(4, 3, 1));
    EXPECT_EQ(m_received.sets[2].addresses, m_received.sets[1].addresses);
    EXPECT_EQ(m_received.sets[0].addresses[0], m_received.sets[1].addresses[0]);
}

TEST_F(Delivery, ANoticeMayCarryMore) {
    SendCallback({0, 0, "GrayImage", QStringList{"s1", "s2"}, 1, 7, "more"});
    Settle();
    EXPECT_EQ(m_received.sets.size(), 1U);
}

TEST_F(Delivery, MoreThanThreeSegmentsDoNotOverrunTheBuffers) {
    SendNotice("ColorImage", {"s1", "s2", "s3", "s4"}, 1);
    SendNotice("ColorImage", {"s1", "s2", "s3", "s4"}, 1);
    Settle();
    ASSERT_EQ(m_received.sets.size(), 2U);
    EXPECT_THAT(m_received.sets[1].first, ElementsAre(1, 2, 3));
    EXPECT_EQ(Recorder::Get().Count("segment"), 6U);
}

TEST_F(Delivery, ALargerFactorReadsWhatTheBuffersHold) {
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    recorder::SetSegment("large", QByteArray(2 * kFrame, 9));
    Settle();
    // The other callback would read beyond the buffers.
    m_client->SetScanCallBackFunction(
        m_handle,
        [](const void* const& context, std::vector<unsigned char*>& images, const int&, const int&,
           std::vector<int>& values) {
            auto& self = *static_cast<Received*>(const_cast<void*>(context));
            self.sets.push_back({images, {images[0][kFrame - 1]}, {}, 0, 0, values});
        },
        &m_received);
    SendNotice("GrayImage", {"large", "s2"}, 2);
    Settle();
    ASSERT_EQ(m_received.sets.size(), 2U);
    EXPECT_THAT(m_received.sets[1].values, ElementsAre(2, 2));
    EXPECT_THAT(m_received.sets[1].first, ElementsAre(9));
    EXPECT_EQ(Recorder::Get().Count("read(large, 1310720)"), 1U);
}

TEST_F(Delivery, LargeImagesGetLargeBuffers) {
    recorder::SetSegment("large", QByteArray(2 * kFrame, 9));
    SendNotice("GrayImage", {"large", "large"}, 2);
    SendNotice("GrayImage", {"s1", "large"}, 1);
    Settle();
    ASSERT_EQ(m_received.sets.size(), 2U);
    EXPECT_THAT(m_received.sets[0].last, ElementsAre(9, 9));
    EXPECT_EQ(Recorder::Get().Count("read(large, 2621440)"), 2U);
    EXPECT_EQ(Recorder::Get().Count("read(s1, 1310720)"), 1U);
}

TEST_F(Delivery, AMalformedNoticeOnlyStartsTheWatchdog) {
    const std::vector<QList<QVariant>> malformed{
        {},
        {0, 0, "GrayImage"},
        {0, 0, "GrayImage", QStringList{"s1", "s2"}},
        {0, 0, "GrayImage", QStringList{}, 1},
        {0, 0, "GrayImage", QStringList{"s1", "s2"}, 0},
        {0, 0, "GrayImage", QStringList{"s1", "s2"}, -1},
        {0, 0, "GrayImage", QStringList{"s1", "s2"}, "many"},
    };
    for (const QList<QVariant>& list : malformed) {
        RunSlot("StartScanCallBackTimer", false);
        SendCallback(list);
        Settle();
        EXPECT_TRUE(Timer(kScanTimer).active);
        EXPECT_THAT(m_received.sets, IsEmpty());
        EXPECT_THAT(NewCalls(), IsEmpty());
    }
}

TEST_F(Delivery, ASetAfterASkippedOneIsDelivered) {
    SendNotice("GrayImage", {"gone", "s2"}, 1);
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    EXPECT_EQ(m_received.sets.size(), 1U);
}

TEST_F(Delivery, NothingIsCalledWithoutAFunctionOrAContext) {
    for (const bool context : {false, true}) {
        m_client->SetStatusCallBackFunction(m_handle, context ? nullptr : Received::OnStatus,
                                            context ? &m_received : nullptr);
        m_client->SetScanCallBackFunction(m_handle, context ? nullptr : Received::OnSet,
                                          context ? &m_received : nullptr);
        SendStatus("7", 1);
        SendNotice("GrayImage", {"s1", "s2"}, 1);
        Settle();
        EXPECT_THAT(m_received.statuses, IsEmpty());
        EXPECT_THAT(m_received.sets, IsEmpty());
    }
    EXPECT_EQ(Recorder::Get().Count("setStatusCallBackFunction(77, 0)"), 2U);
    EXPECT_EQ(Recorder::Get().Count("setScanCallBackFunction(77, 0)"), 2U);
    EXPECT_EQ(Recorder::Get().Count("read"), 4U);  // the images are fetched anyway
}

TEST_F(Delivery, ARefusedChangeKeepsTheCallback) {
    Recorder::Get().FailAlways("setStatusCallBackFunction");
    Recorder::Get().FailAlways("setScanCallBackFunction");
    SendStatus("1", 1);
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    EXPECT_EQ(m_client->SetStatusCallBackFunction(m_handle, nullptr, nullptr), STATUS_FAILED);
    EXPECT_EQ(m_client->SetScanCallBackFunction(m_handle, nullptr, nullptr), STATUS_FAILED);
    Settle();
    EXPECT_TRUE(Timer(kStatusTimer).active);
    EXPECT_TRUE(Timer(kScanTimer).active);
    SendStatus("7", 1);
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    EXPECT_EQ(m_received.statuses.back(), (Status{7, 1}));
    EXPECT_EQ(m_received.sets.size(), 2U);
}

TEST_F(Delivery, ACallbackMayReplaceItself) {
    m_received.during = [this] {
        m_client->SetStatusCallBackFunction(m_handle, nullptr, nullptr);
        m_client->SetScanCallBackFunction(m_handle, nullptr, nullptr);
    };
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    SendStatus("7", 1);
    Settle();
    EXPECT_EQ(m_received.sets.size(), 1U);
    EXPECT_THAT(m_received.statuses, IsEmpty());
}

TEST_F(Delivery, ACallbackThatThrowsIsLogged) {
    m_received.during = [] { throw 1; };
    Output output(Output::Of::kOtherThreads);
    SendStatus("7", 1);
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    EXPECT_TRUE(MatchesGolden("ServiceDelivery", "callbacks that throw", output.End()));
    m_received.during = nullptr;
    SendStatus("8", 1);
    Settle();
    EXPECT_EQ(m_received.statuses.back(), (Status{8, 1}));
}

TEST_F(Delivery, SkippedSetsAreLogged) {
    Output output(Output::Of::kOtherThreads);
    SendNotice("GrayImage", {"s1", "gone"}, 1);
    Settle();
    Recorder::Get().FailAlways("lock");
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    Recorder::Get().FailAlways("open");
    SendNotice("GrayImage", {"s1", "s2"}, 1);
    Settle();
    EXPECT_TRUE(MatchesGolden("ServiceDelivery", "skipped sets", output.End()));
    EXPECT_THAT(m_received.sets, IsEmpty());
    EXPECT_EQ(Recorder::Get().Count("unlock"), 1U);
    EXPECT_EQ(Recorder::Get().Count("destroy"), 2U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
