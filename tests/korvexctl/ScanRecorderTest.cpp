#include "korvexctl/scan/ScanRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ChooseImageSets;
using korvexctl::ChosenImageSet;
using korvexctl::KeptImageSet;
using korvexctl::ScanRecorder;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kWidth = 4;
constexpr int kHeight = 2;
constexpr int kEnoughBuffers = 100;
constexpr milliseconds kLong{60'000};

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
    ScanRecorder recorder(10, ChooseImageSets(10, 0, 0), kEnoughBuffers);
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
    ScanRecorder recorder(6, ChooseImageSets(6, 3, 0), kEnoughBuffers);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 6; ++i) {
        m_library.Deliver(recorder, static_cast<std::uint8_t>(10 * i), i == 2 ? 2 : 3);
    }
    ASSERT_EQ(m_kept.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(m_kept[i]->chosen.number, static_cast<int>(2 * i));
        EXPECT_EQ(m_kept[i]->color, i != 1);
        EXPECT_EQ(m_kept[i]->images[0],
                  std::vector<std::uint8_t>(8, static_cast<std::uint8_t>(20 * i)));
        EXPECT_EQ(m_kept[i]->images[1],
                  std::vector<std::uint8_t>(8, static_cast<std::uint8_t>(20 * i + 1)));
    }
    EXPECT_EQ(m_kept[2]->images[2], std::vector<std::uint8_t>(8, 42));
}

TEST_F(ScanRecorderTest, MoreToKeepThanSetsKeepsEachOnce) {
    ScanRecorder recorder(3, ChooseImageSets(3, 100, 0), kEnoughBuffers);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 3; ++i) {
        m_library.Deliver(recorder, i);
    }
    ASSERT_EQ(m_kept.size(), 3U);
    EXPECT_EQ(m_kept[2]->chosen.number, 2);
}

TEST_F(ScanRecorderTest, ASetThatFindsNoBufferIsCountedAndDeliveredAllTheSame) {
    ScanRecorder recorder(6, ChooseImageSets(6, 6, 0), 2);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 4; ++i) {
        m_library.Deliver(recorder, i);
    }
    ASSERT_EQ(m_kept.size(), 2U);
    recorder.GiveBack(*m_kept[0]);
    m_library.Deliver(recorder, 50);
    m_library.Deliver(recorder, 60);
    ASSERT_EQ(m_kept.size(), 3U);
    EXPECT_EQ(m_kept[2]->chosen.number, 4);
    EXPECT_EQ(m_kept[2]->images[0], std::vector<std::uint8_t>(8, 50));
    EXPECT_EQ(m_kept[1]->images[0], std::vector<std::uint8_t>(8, 1)) << "not given back";
    const auto counts = recorder.Wait(milliseconds(0));
    EXPECT_EQ(counts.delivered, 6);
    EXPECT_EQ(counts.notKept, 3);
}

TEST_F(ScanRecorderTest, AKeptSetCarriesKeyAndPurpose) {
    ScanRecorder recorder(4, ChooseImageSets(4, 1, 2), kEnoughBuffers);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 4; ++i) {
        m_library.Deliver(recorder, static_cast<std::uint8_t>(100 + i));
    }
    ASSERT_EQ(m_kept.size(), 2U);
    EXPECT_TRUE(m_kept[0]->chosen.pictures);
    EXPECT_TRUE(m_kept[0]->chosen.sheet);
    EXPECT_FALSE(m_kept[1]->chosen.pictures);
    EXPECT_TRUE(m_kept[1]->chosen.sheet);
    // Every pixel of the right image is one above the left one's here.
    EXPECT_EQ(m_kept[0]->key, 101);
    EXPECT_EQ(m_kept[1]->key, 103);
    EXPECT_EQ(m_kept[0]->seconds, 0);
    EXPECT_GE(m_kept[1]->seconds, 0);
}

TEST_F(ScanRecorderTest, SetsAfterTheLastOneAreLeftOut) {
    ScanRecorder recorder(2, ChooseImageSets(2, 2, 0), kEnoughBuffers);
    Prepare(recorder);
    for (std::uint8_t i = 0; i < 5; ++i) {
        m_library.Deliver(recorder, i);
    }
    EXPECT_EQ(recorder.Wait(kLong).delivered, 2);
    EXPECT_EQ(m_kept.size(), 2U);
}

TEST_F(ScanRecorderTest, OddSetsAreCountedAndNotDelivered) {
    ScanRecorder recorder(5, ChooseImageSets(5, 5, 0), kEnoughBuffers);
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
    ScanRecorder recorder(1, ChooseImageSets(1, 0, 0), kEnoughBuffers);
    Prepare(recorder);
    std::thread camera([&] { m_library.Deliver(recorder, 1); });
    EXPECT_EQ(recorder.Wait(kLong).delivered, 1);
    camera.join();
}

TEST_F(ScanRecorderTest, StopEndsTheWaitAlsoBeforeTheScan) {
    ScanRecorder recorder(1, ChooseImageSets(1, 0, 0), kEnoughBuffers);
    std::thread person([&] { recorder.Stop(); });
    EXPECT_TRUE(recorder.Wait(kLong).stopped);
    person.join();
    Prepare(recorder);
    m_library.Deliver(recorder, 1);
    EXPECT_EQ(recorder.Wait(kLong).delivered, 0);
}

std::vector<int> NumbersOf(const std::vector<ChosenImageSet>& chosen) {
    std::vector<int> numbers;
    for (const ChosenImageSet& set : chosen) {
        numbers.push_back(set.number);
    }
    return numbers;
}

TEST(ImageSetChoice, SpreadsBothPurposesAndSharesSets) {
    const auto chosen = ChooseImageSets(100, 4, 2);
    EXPECT_THAT(NumbersOf(chosen), ElementsAre(0, 25, 50, 75));
    EXPECT_TRUE(chosen[2].pictures && chosen[2].sheet);
    EXPECT_TRUE(chosen[3].pictures && !chosen[3].sheet);
    EXPECT_THAT(NumbersOf(ChooseImageSets(10, 0, 3)), ElementsAre(0, 3, 6));
}

TEST(ImageSetChoice, HasNoMoreThanThereAreSets) {
    EXPECT_THAT(NumbersOf(ChooseImageSets(2, 200, 8)), ElementsAre(0, 1));
    EXPECT_THAT(ChooseImageSets(5, 0, 0), IsEmpty());
}

TEST(ImageSetChoice, DoesNotOverflowOnALongScan) {
    EXPECT_THAT(NumbersOf(ChooseImageSets(1'000'000, 10'000, 0)).back(), 999'900);
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
