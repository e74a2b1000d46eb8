#include "virtual_head/base/Journal.h"

#include <gmock/gmock.h>

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

void OnAnotherThread(const std::function<void()>& work) {
    std::thread(work).join();
}

TEST(Journal, KeepsCallsInOrderWithArgumentsAndResult) {
    Journal journal;
    journal.Add("zr3DSetLaserEnable", "1, 2", "true");
    journal.Add("SnapShot", "", "-1");
    EXPECT_THAT(journal.Texts(), ElementsAre("zr3DSetLaserEnable(1, 2) = true", "SnapShot() = -1"));
    const auto entries = journal.Entries();
    ASSERT_THAT(entries, SizeIs(2));
    EXPECT_EQ(entries[0].sequence, 0U);
    EXPECT_EQ(entries[1].sequence, 1U);
    EXPECT_EQ(entries[0].thread, std::this_thread::get_id());
    EXPECT_LE(entries[0].time, entries[1].time);
    EXPECT_LE(entries[1].time, std::chrono::steady_clock::now());
}

TEST(Journal, FoldsEqualCallsOfOneThreadInARow) {
    Journal journal;
    for (int i = 0; i < 3; ++i) {
        journal.Add("SnapShot", "", "0");
    }
    ASSERT_THAT(journal.Entries(), SizeIs(1));
    EXPECT_EQ(journal.Entries()[0].count, 3U);
}

TEST(Journal, FoldsAlsoWhenAnotherThreadMadeAnEntryInBetween) {
    Journal journal;
    journal.Add("SnapShot", "", "0");
    OnAnotherThread([&] { journal.Add("zr3DProject", "1", "true"); });
    journal.Add("SnapShot", "", "0");
    ASSERT_THAT(journal.Texts(), ElementsAre("SnapShot() = 0", "zr3DProject(1) = true"));
    EXPECT_EQ(journal.Entries()[0].count, 2U);
}

TEST(Journal, FoldsNothingThatDiffersInCallArgumentsResultOrThread) {
    Journal journal;
    journal.Add("A", "1", "0");
    journal.Add("A", "2", "0");
    journal.Add("A", "2", "-1");
    journal.Add("B", "2", "-1");
    OnAnotherThread([&] { journal.Add("B", "2", "-1"); });
    EXPECT_THAT(journal.Entries(), SizeIs(5));
}

TEST(Journal, CallBetweenTwoEqualOnesOfAThreadKeepsThemApart) {
    Journal journal;
    journal.Add("A", "", "0");
    journal.Add("B", "", "0");
    journal.Add("A", "", "0");
    EXPECT_THAT(journal.Texts(), ElementsAre("A() = 0", "B() = 0", "A() = 0"));
}

TEST(Journal, CountsTheCallsOfAStreamInOneEntryEachUntilAnotherCall) {
    Journal journal;
    for (int frame = 0; frame < 100; ++frame) {
        journal.Add("SnapShot", "", frame == 50 ? "-1" : "0");
        journal.Add("GetResolution", "", "0");
    }
    journal.Add("CloseCamera", "", "0");
    journal.Add("SnapShot", "", "0");
    const auto entries = journal.Entries();
    ASSERT_EQ(entries.size(), 5u);
    EXPECT_EQ(entries[0].Text(), "SnapShot() = 0");
    EXPECT_EQ(entries[0].count, 99u);
    EXPECT_EQ(entries[1].Text(), "GetResolution() = 0");
    EXPECT_EQ(entries[1].count, 100u);
    EXPECT_EQ(entries[2].Text(), "SnapShot() = -1");
    EXPECT_EQ(entries[2].count, 1u);
    EXPECT_EQ(entries[3].Text(), "CloseCamera() = 0");
    EXPECT_EQ(entries[4].Text(), "SnapShot() = 0");
    EXPECT_EQ(entries[4].count, 1u);
}

TEST(Journal, TextsOfSomeCallsLeaveTheOthersOut) {
    Journal journal;
    journal.Add("A", "", "0");
    journal.Add("B", "", "0");
    journal.Add("C", "", "0");
    EXPECT_THAT(journal.Texts({"C", "A"}), ElementsAre("A() = 0", "C() = 0"));
    EXPECT_THAT(journal.Texts({"none"}), IsEmpty());
}

TEST(Journal, IsBoundedAndCountsWhatItDropped) {
    Journal journal;
    const std::size_t added = Journal::kMostEntries + 10;
    for (std::size_t i = 0; i < added; ++i) {
        journal.Add("A", std::to_string(i), "0");
    }
    const auto entries = journal.Entries();
    ASSERT_THAT(entries, SizeIs(Journal::kMostEntries));
    EXPECT_EQ(journal.Dropped(), 10U);
    EXPECT_EQ(entries.front().sequence, 10U);
    EXPECT_EQ(entries.back().sequence, added - 1);
}

TEST(Journal, CallWhoseLatestEntryWasDroppedMakesANewOne) {
    Journal journal;
    journal.Add("A", "", "0");
    OnAnotherThread([&] {
        for (std::size_t i = 0; i < Journal::kMostEntries; ++i) {
            journal.Add("B", std::to_string(i), "0");
        }
    });
    journal.Add("A", "", "0");
    EXPECT_EQ(journal.Entries().back().Text(), "A() = 0");
    EXPECT_EQ(journal.Dropped(), 2U);
}

TEST(Journal, ClearForgetsEntriesAndTheSequenceGoesOn) {
    Journal journal;
    journal.Add("A", "", "0");
    journal.Clear();
    EXPECT_THAT(journal.Entries(), IsEmpty());
    journal.Add("A", "", "0");
    ASSERT_THAT(journal.Entries(), SizeIs(1));
    EXPECT_EQ(journal.Entries()[0].sequence, 1U);
    EXPECT_EQ(journal.Entries()[0].count, 1U);
}

TEST(Journal, ManyThreadsAtOnceLoseNoCall) {
    Journal journal;
    constexpr int kThreads = 4;
    constexpr int kCalls = 500;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&journal] {
            for (int i = 0; i < kCalls; ++i) {
                journal.Add("A", std::to_string(i / 2), "0");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::uint64_t calls = 0;
    for (const JournalEntry& entry : journal.Entries()) {
        calls += entry.count;
    }
    EXPECT_EQ(calls, std::uint64_t{kThreads} * kCalls);
    EXPECT_THAT(journal.Entries(), SizeIs(kThreads * kCalls / 2));
}

}  // namespace
}  // namespace Korvex3Sync::tests
