#include "korvexctl/scan/RunPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <regex>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/scan/SetsTable.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::RunHistory;
using korvexctl::ScanLosses;
using korvexctl::SetRecord;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

SetRecord Set(int number, double seconds, double callbackUs = 10) {
    SetRecord set;
    set.number = number;
    set.seconds = seconds;
    set.callbackUs = callbackUs;
    return set;
}

ScanLosses Missing(std::uint64_t keys) {
    ScanLosses losses;
    losses.library = ScanStatistics{};
    losses.library->framesAccepted = 1;
    losses.library->missingKeys = keys;
    return losses;
}

TEST(RunHistory, NotesEachIntervalInItsBin) {
    RunHistory history;
    history.Add(Set(0, 0));
    history.Add(Set(1, 0.01));
    history.Add(Set(2, 0.04));
    history.Add(Set(3, 0.25));
    ASSERT_EQ(history.Bins().size(), 3U);
    const RunHistory::Bin& first = history.Bins()[0];
    EXPECT_EQ(first.intervals, 2);
    EXPECT_NEAR(first.shortestMs, 10, 1e-6);
    EXPECT_NEAR(first.longestMs, 30, 1e-6);
    EXPECT_NEAR(first.sumMs, 40, 1e-6);
    EXPECT_EQ(history.Bins()[1].intervals, 0);
    EXPECT_NEAR(history.Bins()[2].longestMs, 210, 1e-6);
}

TEST(RunHistory, ALongScanTakesNoMoreRoomAndLosesNothing) {
    RunHistory history;
    constexpr int kSets = 100'000;
    for (int i = 0; i < kSets; ++i) {
        history.Add(Set(i, i * 0.01));
        if (i % 100 == 0) {
            history.AddLosses(i * 0.01, Missing(static_cast<std::uint64_t>(i / 100)));
        }
    }
    EXPECT_LE(history.Bins().size(), RunHistory::kMostBins);
    EXPECT_GE(history.Bins().size(), RunHistory::kMostBins / 2 - 1);
    int intervals = 0;
    std::uint64_t lost = 0;
    for (const RunHistory::Bin& bin : history.Bins()) {
        intervals += bin.intervals;
        lost = std::accumulate(bin.lost.begin(), bin.lost.end(), lost);
        if (bin.intervals > 0) {
            EXPECT_NEAR(bin.shortestMs, 10, 1e-3);
            EXPECT_NEAR(bin.sumMs / bin.intervals, 10, 1e-3);
        }
    }
    EXPECT_EQ(intervals, kSets - 1);
    EXPECT_EQ(lost, kSets / 100 - 1U);
}

TEST(RunHistory, WhatIsNewlyLostFallsToItsMoment) {
    RunHistory history;
    history.AddLosses(0, Missing(2));
    history.AddLosses(0.35, Missing(2));
    history.AddLosses(0.55, Missing(7));
    history.AddLosses(0.65, Missing(6));
    const auto lostIn = [&history](std::size_t bin) {
        const auto& lost = history.Bins()[bin].lost;
        return std::accumulate(lost.begin(), lost.end(), std::uint64_t{0});
    };
    EXPECT_EQ(lostIn(0), 2U);
    EXPECT_EQ(lostIn(3), 0U);
    EXPECT_EQ(lostIn(5), 5U);
    EXPECT_EQ(lostIn(6), 0U);
}

TEST(RunHistory, CallbackTimesFallIntoHalfOctaves) {
    RunHistory history;
    for (const double time : {0.2, 1.0, 1.5, 2.0, 1000.0, 1e12}) {
        history.Add(Set(0, 0, time));
    }
    const auto& classes = history.CallbackClasses();
    EXPECT_EQ(classes[0], 2U);
    EXPECT_EQ(classes[1], 1U);
    EXPECT_EQ(classes[2], 1U);
    EXPECT_EQ(classes[19], 1U);
    EXPECT_EQ(classes.back(), 1U);
}

/// Every element is closed where it was opened.
void ExpectWellFormed(const std::string& document) {
    std::vector<std::string> open;
    const std::regex tag("<(/?)([a-z]+)[^<>]*?(/?)>");
    for (std::sregex_iterator match(document.begin(), document.end(), tag), end; match != end;
         ++match) {
        if ((*match)[1].length() > 0) {
            ASSERT_FALSE(open.empty());
            EXPECT_EQ(open.back(), (*match)[2]);
            open.pop_back();
        } else if ((*match)[3].length() == 0) {
            open.push_back((*match)[2]);
        }
    }
    EXPECT_TRUE(open.empty());
    const std::string texts = std::regex_replace(document, tag, "");
    EXPECT_THAT(texts, AllOf(Not(HasSubstr("<")), Not(HasSubstr(">"))));
}

TEST(RunPicture, ShowsLossesByPlaceAndTheHeader) {
    RunHistory history;
    for (int i = 0; i < 50; ++i) {
        history.Add(Set(i, i * 0.01));
    }
    ScanLosses losses = Missing(40);
    losses.library->monoWithoutColor = 3;
    history.AddLosses(0.2, losses);
    const std::string drawing = DrawRun(history, {"mode laser <&>", "sets 50 of 50"});
    ExpectWellFormed(drawing);
    EXPECT_THAT(drawing, AllOf(HasSubstr("mode laser &lt;&amp;&gt;"), HasSubstr("sets 50 of 50"),
                               HasSubstr(">40 triggers without a set<"),
                               HasSubstr(">3 colour images missing in a set<"),
                               HasSubstr("<title>40 triggers without a set at 0.2 s</title>"),
                               Not(HasSubstr("nothing lost"))));
    EXPECT_THAT(drawing, HasSubstr("<title>50 sets</title>")) << "of one callback time";
}

TEST(RunPicture, OfAScanWithoutALossSaysSo) {
    RunHistory history;
    history.Add(Set(0, 0));
    history.AddLosses(0, Missing(0));
    const std::string drawing = DrawRun(history, {});
    ExpectWellFormed(drawing);
    EXPECT_THAT(drawing, HasSubstr("nothing lost"));
    ExpectWellFormed(DrawRun(RunHistory(), {}));
}

TEST(RunPicture, OneLongGapDoesNotFlattenTheRest) {
    RunHistory history;
    for (int i = 0; i < 100; ++i) {
        history.Add(Set(i, i * 0.01));
    }
    EXPECT_THAT(DrawRun(history, {}), AllOf(HasSubstr(">0 ms<"), HasSubstr(">10 ms<")));
    history.Add(Set(100, 3));
    EXPECT_THAT(DrawRun(history, {}),
                AllOf(HasSubstr(">1 ms<"), HasSubstr(">10 ms<"), HasSubstr(">1000 ms<")));
}

TEST(RunPicture, MarksRoundTimes) {
    RunHistory history;
    for (int i = 0; i < 80; ++i) {
        history.Add(Set(i, i * 0.1));
    }
    EXPECT_THAT(DrawRun(history, {}),
                AllOf(HasSubstr(">1 s<"), HasSubstr(">8 s<"), Not(HasSubstr(">0.8 s<"))));
}

TEST(RunPicture, OfIntervalsBelowAMillisecondHasAScale) {
    RunHistory history;
    for (int i = 0; i < 100; ++i) {
        history.Add(Set(i, i * 0.00001));
    }
    history.Add(Set(100, 0.0015));
    EXPECT_THAT(DrawRun(history, {}), HasSubstr(">0.6 ms<"));
}

TEST(SetsTable, HasALineForEachSetAndAppearsWhole) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "sets.csv";
    {
        korvexctl::SetsTable table(file);
        table.Add({});
        table.PutInPlace();
        EXPECT_FALSE(std::filesystem::exists(file)) << "there was no set";
        SetRecord second = Set(1, 0.0105, 12.34);
        second.key = 5;
        second.color = second.kept = true;
        second.lostBefore = 4;
        table.Add(std::vector{Set(0, 0, 1)});
        table.Add(std::vector{second});
        EXPECT_FALSE(std::filesystem::exists(file)) << "it is not complete";
        table.PutInPlace();
    }
    EXPECT_EQ(ReadText(file),
              "number,key,seconds,interval_ms,color,lost_before,callback_us,kept,recorded\n"
              "0,0,0.000000,,0,0,1.0,0,0\n"
              "1,5,0.010500,10.500,1,4,12.3,1,0\n");
}

}  // namespace

}  // namespace Korvex3Sync::tests
