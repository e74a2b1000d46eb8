#include "korvexctl/scan/ScanLosses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "korvexctl/ScanOverHead.h"
#include "korvexctl/files/Output.h"
#include "korvexctl/files/StandardOutput.h"
#include "korvexctl/scan/ScanReport.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ScanLosses;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string Printed(const ScanLosses& losses) {
    ::testing::internal::CaptureStdout();
    {
        korvexctl::StandardOutput standardOutput(false);
        korvexctl::Output output(standardOutput, false);
        Print(losses, output);
    }
    return ::testing::internal::GetCapturedStdout();
}

TEST(ScanLosses, NothingLostIsSaid) {
    ScanLosses losses;
    losses.library = ScanStatistics{};
    losses.library->framesAccepted = 4;
    losses.library->setsDelivered = 2;
    losses.library->failedSnaps = 3;  // a camera that waits
    losses.library->callbackP50Us = 120;
    losses.library->callbackP99Us = 1'500;
    losses.library->callbackLongestUs = 20'000;
    EXPECT_EQ(Printed(losses),
              "nothing lost\ncallback 120 us (median), 1.50 ms (99 %), 20.00 ms (longest)\n");
}

TEST(ScanLosses, EachPlaceWithALossHasALineAndTheOthersNone) {
    ScanLosses losses;
    losses.library = ScanStatistics{};
    losses.library->missingKeys = 12;
    losses.library->refusedFrames = 1;
    losses.notKept = 7;
    EXPECT_EQ(Printed(losses),
              "lost:\n"
              "       1  torn or incomplete frames, refused by the camera library\n"
              "      12  triggers without a set\n"
              "       7  sets not kept because writing was too slow\n");
    EXPECT_EQ(losses.Text(),
              "lost: 1 torn or incomplete frames, refused by the camera library; 12 triggers "
              "without a set; 7 sets not kept because writing was too slow");
    EXPECT_EQ(losses.Sum(), 19U) << "a refused frame is a missing trigger too";
}

TEST(ScanLosses, EveryLossOfTheLibraryIsNamed) {
    for (const auto place : {&ScanStatistics::refusedFrames, &ScanStatistics::rejectedGeometry,
                             &ScanStatistics::undecodableFrames, &ScanStatistics::unroutedFrames,
                             &ScanStatistics::colorWithoutMono, &ScanStatistics::monoWithoutColor,
                             &ScanStatistics::repeatedKeys, &ScanStatistics::setsDropped,
                             &ScanStatistics::missingKeys, &ScanStatistics::setsWithoutCallback}) {
        ScanLosses losses;
        losses.library = ScanStatistics{};
        *losses.library.*place = 123;
        EXPECT_THAT(Printed(losses), HasSubstr("     123  "));
        nlohmann::json figures;
        AddToJson(losses, figures);
        int told = 0;
        for (const auto& count : figures["losses"]) {
            told += count == 123 ? 1 : 0;
        }
        EXPECT_EQ(told, 1);
    }
}

TEST(ScanLosses, SilentCamerasAreNotTakenForALosslessScan) {
    ScanLosses losses;
    losses.library = ScanStatistics{};
    EXPECT_EQ(Printed(losses), "no camera delivered a frame\n");
}

TEST(ScanLosses, WhatTheLibraryDoesNotTellIsNull) {
    nlohmann::json figures;
    AddToJson(ScanLosses{}, figures);
    EXPECT_TRUE(figures["callback_us"].is_null());
    EXPECT_TRUE(figures["losses"]["missing_keys"].is_null());
    EXPECT_EQ(figures["losses"]["not_kept_disk"], 0);
    EXPECT_EQ(Printed({}), "the library does not report losses\n");
}

TEST(ScanReport, OneFileIsOne) {
    korvexctl::ScanReport report;
    report.options.folder = "scan";
    report.files = {"set_000_left.png"};
    ::testing::internal::CaptureStdout();
    {
        korvexctl::StandardOutput standardOutput(false);
        korvexctl::Output output(standardOutput, false);
        Print(report, output);
    }
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("wrote 1 file to scan\n"));
}

TEST_F(ScanOverHead, TheFiguresTellLossesAndCallbackTimes) {
    GivePeriod(30);
    const auto outcome = Scan();
    ASSERT_EQ(outcome.code, korvexctl::ExitCode::Done) << outcome.message;
    const nlohmann::json& figures = *outcome.figures;
    EXPECT_EQ(figures["losses"]["missing_keys"], 0);
    EXPECT_EQ(figures["losses"]["color_without_mono"], 0);
    EXPECT_EQ(figures["losses"]["not_kept_disk"], 0);
    const nlohmann::json& times = figures["callback_us"];
    EXPECT_LE(times["p50"].get<double>(), times["p99"].get<double>());
    EXPECT_GE(times["longest"].get<double>(), 0);
}

TEST_F(ScanOverHead, MissingColourIsThatOfTheSetsThatCame) {
    ASSERT_TRUE(m_head->GetFaults().Order({virtual_head::FaultKind::LoseColor, "", 1'000'000}));
    m_options.end.sets = 7;
    const auto outcome = Scan();
    m_head->GetFaults().Clear();
    ASSERT_EQ(outcome.code, korvexctl::ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["sets"]["without_color"], 7);
    EXPECT_EQ(outcome.figures["losses"]["mono_without_color"], 7);
}

TEST(ScanLosses, AHeadWithoutColourMissesNone) {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.color = false;
    const RequestedHead head(description);
    korvexctl::ScanOptions options;
    options.end.sets = 5;
    options.timeoutSeconds = 30;
    korvexctl::StandardOutput standardOutput(false);
    korvexctl::Output output(standardOutput, true);
    const korvexctl::Outcome outcome = korvexctl::RunScan({}, options, output);
    ASSERT_EQ(outcome.code, korvexctl::ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["sets"]["without_color"], 5);
    EXPECT_EQ(outcome.figures["losses"]["mono_without_color"], 0);
}

TEST_F(ScanOverHead, AFrameThatTheCameraLibraryFailsToGiveIsCounted) {
    ASSERT_TRUE(m_head->GetFaults().Fail("SnapShot", 4));
    GivePeriod(30);
    const auto outcome = Scan();
    ASSERT_EQ(outcome.code, korvexctl::ExitCode::Done) << outcome.message;
    EXPECT_GE(outcome.figures["losses"]["failed_snaps"].get<int>(), 4);
}

}  // namespace

}  // namespace Korvex3Sync::tests
