#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Korvex3Sync/Types.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/files/StandardOutput.h"
#include "korvexctl/scan/Scan.h"
#include "platform/os/Clock.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {

/// Runs the scan command in this process, over a virtual head whose journal and faults are at hand.
class ScanOverHead : public ::testing::Test {
protected:
    ScanOverHead() {
        m_options.end.sets = 5;
        // For scans that succeed, however slow the machine is.
        m_options.timeoutSeconds = 30;
    }

    /// Pictures go through `store`; with `json` nothing is printed.
    korvexctl::Outcome Scan(const korvexctl::StoreFile& store = korvexctl::StoreUnsynced,
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

    /// What the command line says about a setting.
    void Give(const std::string& setting, korvexctl::SettingValue value) {
        m_options.commandLine.push_back({&korvexctl::RequireSetting(setting), std::move(value)});
    }
    void GivePeriod(int milliseconds) { Give("trigger-period", {double(milliseconds)}); }
    void GiveMode(CAMERA_TRIGGER_MODE mode) { Give("trigger-mode", {double(mode)}); }

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

    RequestedHead m_head{SmallHeadDescription()};
    korvexctl::ScanOptions m_options;
};

}  // namespace Korvex3Sync::tests
