#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "korvexctl/files/StandardOutput.h"
#include "korvexctl/scan/Scan.h"
#include "platform/os/Clock.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {

/// Runs the scan command in this process, over a virtual head whose journal and faults are at hand.
class ScanOverHead : public ::testing::Test {
protected:
    ScanOverHead() {
        m_options.sets = 5;
        // For scans that succeed, however slow the machine is.
        m_options.timeoutSeconds = 30;
    }

    static virtual_head::HeadDescription SmallHead() {
        virtual_head::HeadDescription description;
        description.width = 64;
        description.height = 48;
        return description;
    }

    /// Pictures go through `store`; with `json` nothing is printed.
    korvexctl::Outcome Scan(const korvexctl::StoreFile& store = korvexctl::StoreWhole,
                            bool json = true) {
        korvexctl::StandardOutput standardOutput(false);
        korvexctl::Output output(standardOutput, json);
        try {
            return korvexctl::RunScan({}, m_options, output, store);
        } catch (const korvexctl::CommandError& error) {
            korvexctl::Outcome outcome;
            outcome.code = error.Code();
            outcome.message = error.what();
            return outcome;
        }
    }

    /// Loses every frame. Orders more faults than a test can use up.
    void LoseEveryFrame() {
        EXPECT_TRUE(m_head->GetFaults().Slow("SnapShot", std::chrono::milliseconds(20), 1'000'000));
        EXPECT_TRUE(m_head->GetFaults().Fail("SnapShot", 1'000'000));
    }

    void WaitForTriggers(std::uint64_t triggers) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (m_head->Clock().Triggers() < triggers && std::chrono::steady_clock::now() < end) {
            os::SleepFor(std::chrono::milliseconds(5));
        }
        EXPECT_GE(m_head->Clock().Triggers(), triggers);
    }

    std::vector<std::string> Commands(const std::vector<std::string>& calls) {
        return m_head->GetJournal().Texts(calls);
    }

    void ExpectHeadLeftDark() {
        const auto triggers = Commands({"zr3DSetVideoTrigleMode"});
        const auto lasers = Commands({"zr3DSetLaserEnable"});
        ASSERT_FALSE(triggers.empty());
        ASSERT_FALSE(lasers.empty());
        EXPECT_EQ(triggers.back(), "zr3DSetVideoTrigleMode(5) = true");
        EXPECT_THAT(lasers.back(), ::testing::StartsWith("zr3DSetLaserEnable(0"));
        EXPECT_THAT(Commands({"zr3DExitHidDev"}).back(), ::testing::StartsWith("zr3DExitHidDev"));
    }

    RequestedHead m_head{SmallHead()};
    korvexctl::ScanOptions m_options;
};

}  // namespace Korvex3Sync::tests
