#include "korvexctl/scan/ScanRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ImageSetChoice;
using korvexctl::KeptImageSet;
using korvexctl::ScanPlan;
using korvexctl::ScanRecorder;
using korvexctl::SetRecord;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kWidth = 4;
constexpr int kHeight = 2;
constexpr int kEnoughBuffers = 100;
constexpr milliseconds kLong{60'000};

ScanPlan Plan(int sets, int keep, int buffers = kEnoughBuffers) {
    return {sets, ImageSetChoice(keep, {sets, {}}), false, buffers};
}

/// Delivers sets as the library does.
class Library {
public:
    void Deliver(ScanRecorder& recorder, std::uint8_t value, std::size_t images = 3,
                 int width = kWidth) {
        std::vector<unsigned char*> pointers;
        for (std::size_t i = 0; i < images; ++i) {
            std::fill(m_images[i].begin(), m_images[i].end(),
                      static_cast<unsigned char>(value + i));
            pointers.push_back(m_images[i].data());
        }
        DeliverImages(recorder, pointers, width);
    }

    static void DeliverImages(ScanRecorder& recorder, std::vector<unsigned char*> pointers,
                              int width) {
        std::vector<int> channels(pointers.size(), 1);
        const void* const context = recorder.Context();
        ScanRecorder::OnImageSet(context, pointers, width, kHeight, channels);
    }

private:
    std::array<std::array<unsigned char, kWidth * kHeight>, 4> m_images{};
};

class ScanRecorderTest : public ::testing::Test {
protected:
    void Prepare(ScanRecorder& recorder) {
        recorder.Prepare(kWidth, kHeight,
                         [this](const KeptImageSet& set) { m_kept.push_back(&set); });
    }

    Library m_library;
    std::vector<const KeptImageSet*> m_kept;
};

TEST_F(ScanRecorderTest, CountsSetsWithAndWithoutColor) {
    ScanRecorder recorder(Plan(10, 0));
    Prepare(recorder);
    m_library.Deliver(recorder, 1);
    m_library.Deliver(recorder, 2, 2);
    m_library.Deliver(recorder, 3);
    const auto counts = recorder.Wait(milliseconds(0));
    EXPECT_EQ(counts.delivered, 3);
    EXPECT_EQ(counts.withColor, 2);
    EXPECT_EQ(counts.odd, 0);
    EXPECT_THAT(m_kept, IsEmpty());
}

TEST_F(ScanRecorderTest, KeepsCopiesSpreadOverTheScan) {
    ScanRecorder recorder(Plan(6, 3));
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 6; ++i) {
        m_library.Deliver(recorder, static_cast<std::uint8_t>(10 * i), i == 2 ? 2 : 3);
    }
    ASSERT_EQ(m_kept.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(m_kept[i]->number, static_cast<int>(2 * i));
        EXPECT_EQ(m_kept[i]->color, i != 1);
        EXPECT_EQ(m_kept[i]->images[0],
                  std::vector<std::uint8_t>(8, static_cast<std::uint8_t>(20 * i)));
        EXPECT_EQ(m_kept[i]->images[1],
                  std::vector<std::uint8_t>(8, static_cast<std::uint8_t>(20 * i + 1)));
    }
    EXPECT_EQ(m_kept[2]->images[2], std::vector<std::uint8_t>(8, 42));
}

TEST_F(ScanRecorderTest, MoreToKeepThanSetsKeepsEachOnce) {
    ScanRecorder recorder(Plan(3, 100));
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 3; ++i) {
        m_library.Deliver(recorder, i);
    }
    ASSERT_EQ(m_kept.size(), 3U);
    EXPECT_EQ(m_kept[2]->number, 2);
}

TEST_F(ScanRecorderTest, ASetThatFindsNoBufferIsCountedAndDeliveredAllTheSame) {
    ScanRecorder recorder(Plan(6, 6, 2));
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 4; ++i) {
        m_library.Deliver(recorder, i);
    }
    ASSERT_EQ(m_kept.size(), 2U);
    EXPECT_EQ(recorder.Waiting(), 2U);
    recorder.GiveBack(*m_kept[0]);
    m_library.Deliver(recorder, 50);
    m_library.Deliver(recorder, 60);
    ASSERT_EQ(m_kept.size(), 3U);
    EXPECT_EQ(m_kept[2]->number, 4);
    EXPECT_EQ(m_kept[2]->images[0], std::vector<std::uint8_t>(8, 50));
    EXPECT_EQ(m_kept[1]->images[0], std::vector<std::uint8_t>(8, 1)) << "not given back";
    const auto counts = recorder.Wait(milliseconds(0));
    EXPECT_EQ(counts.delivered, 6);
    EXPECT_EQ(counts.notKept, 3);
}

TEST_F(ScanRecorderTest, ASetThatWasMissedIsMadeUpForByALaterOne) {
    ScanRecorder recorder(Plan(8, 4, 1));
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 3; ++i) {
        m_library.Deliver(recorder, i);  // 0 is kept; 2 finds no buffer
    }
    EXPECT_EQ(recorder.Wait(milliseconds(0)).notKept, 1);
    for (std::uint8_t i = 3; i < 8; ++i) {
        recorder.GiveBack(*m_kept.back());
        m_library.Deliver(recorder, i);
    }
    EXPECT_EQ(recorder.Wait(milliseconds(0)).notKept, 0);
    EXPECT_EQ(m_kept.size(), 4U);
}

TEST_F(ScanRecorderTest, ARecordingTakesEverySetAndCountsThoseThatFindNoBuffer) {
    ScanPlan plan = Plan(6, 2, 3);
    plan.recording = true;
    ScanRecorder recorder(plan);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 5; ++i) {
        m_library.Deliver(recorder, i);
    }
    ASSERT_EQ(m_kept.size(), 3U);
    EXPECT_EQ(m_kept[0]->purpose, (korvexctl::Purpose{true, true, true}));
    EXPECT_EQ(m_kept[1]->purpose, (korvexctl::Purpose{false, false, true}));
    const auto counts = recorder.Wait(milliseconds(0));
    EXPECT_EQ(counts.notRecorded, 2);
    EXPECT_EQ(counts.notKept, 1);
}

TEST_F(ScanRecorderTest, AKeptSetCarriesKeyPurposeAndWhatWasLostSoFar) {
    ScanRecorder recorder(Plan(18, 9));
    Prepare(recorder);
    // Every pixel of the right image, so the key too, is one above the left one's here.
    for (const int value : {255, 0, 1, 6, 7, 5, 8}) {
        m_library.Deliver(recorder, static_cast<std::uint8_t>(value));
    }
    ASSERT_EQ(m_kept.size(), 4U);
    EXPECT_TRUE(m_kept[0]->purpose.pictures);
    EXPECT_TRUE(m_kept[0]->purpose.sheet);
    EXPECT_EQ(m_kept[1]->key, 2);
    EXPECT_EQ(m_kept[1]->lost, 0);
    EXPECT_EQ(m_kept[2]->lost, 4);
    EXPECT_EQ(m_kept[3]->lost, 4) << "a late key is no loss";
    EXPECT_EQ(m_kept[0]->seconds, 0);
    EXPECT_GE(m_kept[1]->seconds, 0);
}

TEST_F(ScanRecorderTest, EverySetIsNotedOnce) {
    ScanRecorder recorder(Plan(18, 2));
    Prepare(recorder);
    m_library.Deliver(recorder, 2);
    m_library.Deliver(recorder, 3, 2);
    std::vector<SetRecord> notes = recorder.FetchRecords();
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[0].key, 3);
    EXPECT_EQ(notes[0].lostBefore, 3) << "keys begin at 0";
    EXPECT_TRUE(notes[0].color && notes[0].kept);
    EXPECT_EQ(notes[1].number, 1);
    EXPECT_EQ(notes[1].lostBefore, 0);
    EXPECT_FALSE(notes[1].color || notes[1].kept);
    EXPECT_GT(notes[1].callbackUs, 0);
    m_library.Deliver(recorder, 14);
    notes = recorder.FetchRecords();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].lostBefore, 10);
}

TEST_F(ScanRecorderTest, KeysThatRestartAreNoLoss) {
    ScanRecorder recorder(Plan(18, 0));
    Prepare(recorder);
    m_library.Deliver(recorder, 100);
    recorder.ExpectNewKeys(true);
    m_library.Deliver(recorder, 150);
    recorder.ExpectNewKeys(false);
    m_library.Deliver(recorder, 40);
    m_library.Deliver(recorder, 43);
    const std::vector<SetRecord> notes = recorder.FetchRecords();
    ASSERT_EQ(notes.size(), 4U);
    EXPECT_EQ(notes[1].lostBefore, 0);
    EXPECT_EQ(notes[2].lostBefore, 0);
    EXPECT_EQ(notes[3].lostBefore, 2);
}

TEST_F(ScanRecorderTest, SetsAfterTheLastOneAreLeftOut) {
    ScanRecorder recorder(Plan(2, 2));
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 5; ++i) {
        m_library.Deliver(recorder, i);
    }
    EXPECT_EQ(recorder.Wait(kLong).delivered, 2);
    EXPECT_EQ(m_kept.size(), 2U);
}

TEST_F(ScanRecorderTest, OddSetsAreCountedAndNotDelivered) {
    ScanRecorder recorder(Plan(5, 5));
    Prepare(recorder);
    std::array<unsigned char, kWidth * kHeight> image{};
    m_library.Deliver(recorder, 1, 1);
    m_library.Deliver(recorder, 1, 4);
    m_library.Deliver(recorder, 1, 2, kWidth / 2);
    Library::DeliverImages(recorder, {}, kWidth);
    Library::DeliverImages(recorder, {image.data(), nullptr}, kWidth);
    const auto counts = recorder.Wait(milliseconds(0));
    EXPECT_EQ(counts.odd, 5);
    EXPECT_EQ(counts.delivered, 0);
    EXPECT_THAT(m_kept, IsEmpty());
}

TEST_F(ScanRecorderTest, WaitEndsWithTheLastSet) {
    ScanRecorder recorder(Plan(1, 0));
    Prepare(recorder);
    std::thread camera([&] { m_library.Deliver(recorder, 1); });
    EXPECT_EQ(recorder.Wait(kLong).delivered, 1);
    camera.join();
}

TEST_F(ScanRecorderTest, StopEndsTheWaitAlsoBeforeTheScan) {
    ScanRecorder recorder(Plan(1, 0));
    std::thread person([&] { recorder.Stop(); });
    EXPECT_TRUE(recorder.Wait(kLong).stopped);
    person.join();
    Prepare(recorder);
    m_library.Deliver(recorder, 1);
    EXPECT_EQ(recorder.Wait(kLong).delivered, 0);
}

/// The numbers of the sets that get pictures when every set finds a buffer, one set a second.
std::vector<int> Chosen(int keep, korvexctl::ScanEnd end, int sets) {
    const ImageSetChoice choice(keep, end);
    std::vector<int> numbers;
    for (int i = 0; i < sets; ++i) {
        if (choice.Due(i, i) > static_cast<int>(numbers.size())) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

TEST(ImageSetChoice, SpreadsOverTheSets) {
    EXPECT_THAT(Chosen(4, {100, {}}, 100), ElementsAre(0, 25, 50, 75));
    EXPECT_THAT(Chosen(3, {10, {}}, 10), ElementsAre(0, 3, 6));
    EXPECT_THAT(Chosen(200, {2, {}}, 2), ElementsAre(0, 1));
    EXPECT_THAT(Chosen(0, {5, {}}, 5), IsEmpty());
    EXPECT_EQ(ImageSetChoice(10'000, {1'000'000, {}}).Due(999'899, 0), 9'999);
    EXPECT_EQ(ImageSetChoice(10'000, {1'000'000, {}}).Due(999'900, 0), 10'000);
}

TEST(ImageSetChoice, SpreadsOverTheTimeThatEndsTheScan) {
    EXPECT_THAT(Chosen(3, {{}, 30.0}, 40), ElementsAre(0, 10, 20));
    // Whichever comes first ends it.
    EXPECT_THAT(Chosen(4, {100, 20.0}, 20), ElementsAre(0, 5, 10, 15));
    EXPECT_EQ(ImageSetChoice(4, {{}, 20.0}).Due(1, 19), 2) << "there were only two sets";
}

TEST(ImageSetChoice, TakesTheFirstOnesWithoutAnEnd) {
    EXPECT_THAT(Chosen(3, {}, 40), ElementsAre(0, 1, 2));
}

TEST(ImageSetChoice, TheSheetShowsUpToEightOfTheKeptOnes) {
    const auto shown = [](int keep) {
        const ImageSetChoice choice(keep, {1000, {}});
        std::vector<int> rows;
        for (int i = 0; i < keep; ++i) {
            if (choice.OnSheet(i)) {
                rows.push_back(i);
            }
        }
        return rows;
    };
    EXPECT_THAT(shown(3), ElementsAre(0, 1, 2));
    EXPECT_THAT(shown(24), ElementsAre(0, 3, 6, 9, 12, 15, 18, 21));
}

TEST(ScanRate, IsMeasuredFromTheFirstToTheLastSet) {
    ScanRecorder::Counts counts;
    counts.delivered = 11;
    counts.first = ScanRecorder::Clock::time_point(std::chrono::seconds(100));
    counts.last = counts.first + std::chrono::seconds(2);
    EXPECT_EQ(counts.Rate(), 5.0);
}

TEST(ScanRate, NeedsTwoSets) {
    ScanRecorder::Counts counts;
    EXPECT_EQ(counts.Rate(), std::nullopt);
    counts.delivered = 1;
    EXPECT_EQ(counts.Rate(), std::nullopt);
}

}  // namespace

}  // namespace Korvex3Sync::tests
