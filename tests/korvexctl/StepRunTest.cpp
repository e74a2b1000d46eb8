#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>

#include "korvexctl/health/StepRun.h"
#include "korvexctl/health/StepTable.h"

namespace Korvex3Sync::tests {

namespace {

using namespace std::chrono_literals;
using korvexctl::Finding;
using korvexctl::Step;
using korvexctl::StepRow;
using korvexctl::StepRun;
using korvexctl::Verdict;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

Finding Fine() {
    return {Verdict::Ok, "fine"};
}

std::vector<Verdict> Verdicts(const std::vector<StepRow>& rows) {
    std::vector<Verdict> verdicts;
    for (const StepRow& row : rows) {
        verdicts.push_back(row.finding.verdict);
    }
    return verdicts;
}

TEST(StepRun, GivesOneRowForEachStepInOrder) {
    std::vector<std::string> told;
    StepRun run({{"first", 60s, Fine},
                 {"second", 60s, []() -> Finding { throw std::runtime_error("broken"); }},
                 {"third", 60s, [] {
                      return Finding{Verdict::NotRun, "no board"};
                  }}});
    const auto rows = run.Wait([&](const StepRow& row) { told.push_back(row.name); });
    EXPECT_THAT(Verdicts(rows), ElementsAre(Verdict::Ok, Verdict::Fault, Verdict::NotRun));
    EXPECT_EQ(rows[1].finding.text, "broken");
    EXPECT_THAT(told, ElementsAre("first", "second", "third"));
    EXPECT_FALSE(run.Hangs());
}

TEST(StepRun, AStepThatHangsIsAFaultAndNothingRunsAfterIt) {
    std::promise<void> letGo;
    std::atomic<bool> ranOn{false};
    {
        StepRun run({{"first", 60s, Fine},
                     {"stuck", 50ms,
                      [&letGo] {
                          letGo.get_future().wait();
                          return Fine();
                      }},
                     {"after", 60s,
                      [&ranOn] {
                          ranOn = true;
                          return Fine();
                      },
                      true}});
        const auto rows = run.Wait([](const StepRow&) {});
        EXPECT_TRUE(run.Hangs());
        EXPECT_THAT(Verdicts(rows), ElementsAre(Verdict::Ok, Verdict::Fault, Verdict::NotRun));
        EXPECT_EQ(rows[1].finding.text, "did not finish within 0.05 s");
        EXPECT_THAT(rows[2].finding.text, HasSubstr("stuck"));
        letGo.set_value();
    }
    // The rows were given: a step that would run now would be told to nobody.
    EXPECT_FALSE(ranOn);
}

TEST(StepRun, StoppedBeforeItBeginsItOnlyCleansUp) {
    StepRun run({{"first", 60s, Fine}, {"clean up", 60s, Fine, true}});
    run.Stop();
    EXPECT_THAT(Verdicts(run.Wait([](const StepRow&) {})),
                ElementsAre(Verdict::NotRun, Verdict::Ok));
}

TEST(StepRun, StoppedItOnlyCleansUp) {
    StepRun* running = nullptr;
    StepRun run({{"first", 60s,
                  [&running] {
                      running->Stop();
                      return Fine();
                  }},
                 {"second", 60s, Fine},
                 {"clean up", 60s, Fine, true}});
    running = &run;
    const auto rows = run.Wait([](const StepRow&) {});
    EXPECT_EQ(rows[1].finding.verdict, Verdict::NotRun);
    EXPECT_EQ(rows[1].finding.text, "interrupted");
    EXPECT_EQ(rows[2].finding.verdict, Verdict::Ok);
}

TEST(StepTable, AdviceOfSeveralLinesIsAlignedBelowItsArrow) {
    constexpr korvexctl::VerdictWords kWords{"ok", "warn", "FAULT", "-"};
    StepRow row;
    row.name = "board";
    row.finding = {Verdict::Fault, "not found", "plug it in:\nthere\n"};
    EXPECT_THAT(RowLines(row, kWords, 7),
                ElementsAre("FAULT  board    not found",
                            "                -> plug it in:", "                   there"));
    row.finding.advice = "";
    EXPECT_THAT(RowLines(row, kWords, 5), ElementsAre("FAULT  board  not found"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
