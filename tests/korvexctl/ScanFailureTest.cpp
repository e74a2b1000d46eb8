#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "korvexctl/Korvexctl.h"
#include "platform/os/Clock.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr int kNotWritable = 6;
constexpr int kDiskFull = 7;
constexpr int kInterrupted = 130;

class KorvexctlScanFailure : public ::testing::Test {
protected:
    std::vector<std::string> Command(const std::string& sets) const {
        return {"--virtual=" + m_head.string(),
                "scan",
                "--json",
                "--sets",
                sets,
                "--out",
                m_out.string()};
    }

    void ExpectWholePictures() const {
        for (const std::string& name : FileNames(m_out)) {
            EXPECT_THAT(name, Not(StartsWith("."))) << "a temporary file";
            if (name.ends_with(".png")) {
                const int width = DecodePng(ReadText(m_out / name)).width;
                EXPECT_TRUE(width == kSmallWidth || name == "contact-sheet.png") << name;
                EXPECT_GE(width, kSmallWidth) << name;
            }
        }
    }

    bool WaitForFile(const std::filesystem::path& file) const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!std::filesystem::exists(file)) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            os::SleepFor(std::chrono::milliseconds(5));
        }
        return true;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_head = WriteSmallHead(m_folder.Path());
    std::filesystem::path m_out = m_folder.Path() / "scan";
};

class KorvexctlInterrupt : public KorvexctlScanFailure,
                           public ::testing::WithParamInterface<int> {};

TEST_P(KorvexctlInterrupt, EndsTheScanWithCompleteFiles) {
    const auto log = m_folder.Path() / "log";
    std::vector<std::string> command = Command("1000000");
    command.insert(command.end(), {"--log", log.string()});
    ChildProcess scan(KorvexctlCommand(command), WithoutHead());
    ASSERT_TRUE(WaitForFile(m_out / "set_000_color.png"));
    scan.Signal(GetParam());
    const ChildResult result = scan.Wait();

    EXPECT_EQ(result.exitCode, kInterrupted);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: interrupted: "));
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["interrupted"], true);
    EXPECT_EQ(document["error"]["exit_code"], kInterrupted);
    EXPECT_GT(document["sets"]["delivered"].get<int>(), 0);
    EXPECT_EQ(result.output, ReadText(m_out / "scan.json"));
    ExpectWholePictures();
    // The trigger was switched off and the head was disconnected.
    EXPECT_THAT(ReadText(log), HasSubstr("DisConnectDevice"));
}

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlInterrupt,
                         ::testing::Values(kInterrupt, kTerminate, kHangUp),
                         [](const auto& row) { return SignalName(row.param); });

TEST_F(KorvexctlScanFailure, ABoardThatGoesMuteDuringTheScanIsToldWithWhatMayBeOn) {
    WriteSmallHead(m_folder.Path(), "[[fault]]\nwhat = \"board-mute\"\nat_trigger = 3\n");
    const ChildResult result = RunKorvexctl(Command("20"));
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_THAT(result.error,
                HasSubstr("WARNING: the board refused to switch off: trigger, laser lines;"));
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["sets"]["delivered"], 20);
    EXPECT_EQ(document["board_lost"], true);
    EXPECT_EQ(document["left_on"], (nlohmann::json{"trigger", "laser lines"}));
    EXPECT_THAT(document["error"]["message"].get<std::string>(),
                HasSubstr("the board does not answer"));
}

TEST_F(KorvexctlScanFailure, ALaserThatTheBoardDoesNotSwitchOffIsARefusal) {
    WriteSmallHead(m_folder.Path(),
                   "[[fault]]\nwhat = \"fail\"\ncall = \"zr3DSetLaserEnable\"\nat_trigger = 1\n");
    const ChildResult result = RunKorvexctl(Command("20"));
    EXPECT_EQ(result.exitCode, 9) << result.output;
    EXPECT_THAT(result.error, HasSubstr("WARNING: the board refused to switch off: laser lines;"));
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["left_on"], nlohmann::json{"laser lines"});
    EXPECT_EQ(document["board_lost"], false);
    EXPECT_EQ(document["error"]["message"], "not switched off: laser lines");
}

TEST_F(KorvexctlScanFailure, WhatAHangupIgnoredByNohupDoesNotEnd) {
    std::vector<std::string> command{"nohup"};
    for (const std::string& word : KorvexctlCommand(Command("300"))) {
        command.push_back(word);
    }
    ChildProcess scan(command, WithoutHead());
    ASSERT_TRUE(WaitForFile(m_out / "set_000_color.png"));
    scan.Signal(kHangUp);
    const ChildResult result = scan.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(ParseJson(result.output)["sets"]["delivered"], 300);
}

TEST_F(KorvexctlScanFailure, AFolderThatCannotBeMadeIsToldBeforeTheScan) {
    WriteText(m_out, "a file in the way");
    for (const auto& folder : {m_out, m_out / "below"}) {
        const ChildResult result =
            RunKorvexctl({"--virtual", "scan", "--json", "--out", folder.string()});
        EXPECT_EQ(result.exitCode, kNotWritable);
        EXPECT_THAT(result.error, HasSubstr("cannot make the folder " + folder.string()));
        const nlohmann::json document = ParseJson(result.output);
        EXPECT_EQ(document["error"]["exit_code"], kNotWritable);
        EXPECT_FALSE(document.contains("sets")) << "a scan was made";
    }
}

TEST_F(KorvexctlScanFailure, AFolderWhereNothingCanBeWrittenIsToldBeforeTheScan) {
    const ChildResult result = RunKorvexctl({"--virtual", "scan", "--json", "--out", "/proc/self"});
    EXPECT_EQ(result.exitCode, kNotWritable);
    EXPECT_THAT(result.error, HasSubstr("cannot write in the folder /proc/self: "));
    EXPECT_FALSE(ParseJson(result.output).contains("sets")) << "a scan was made";
}

TEST_F(KorvexctlScanFailure, AFullDiskEndsTheScanCleanly) {
    // Room for the small files that prepare the scan, and for no picture.
    ChildOptions options;
    options.fileSizeLimit = 1000;
    const ChildResult result = RunKorvexctl(Command("1000000"), options);
    EXPECT_EQ(result.exitCode, kDiskFull);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: disk full: cannot write " + m_out.string()));
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["error"]["exit_code"], kDiskFull);
    EXPECT_GT(document["sets"]["delivered"].get<int>(), 0);
    EXPECT_LT(document["sets"]["delivered"].get<int>(), 1000000);
    EXPECT_THAT(FileNames(m_out), IsEmpty());
}

TEST_F(KorvexctlScanFailure, WithoutAHeadThereIsNothingToScan) {
    const ChildResult result = RunKorvexctl({"scan", "--json"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(ParseJson(result.output)["error"]["exit_code"], 3);
}

}  // namespace

}  // namespace Korvex3Sync::tests
