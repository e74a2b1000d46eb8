#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <regex>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/head/UserMemory.h"
#include "support/CaseName.h"
#include "support/Environment.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class BoardCommands : public ::testing::Test {
protected:
    virtual_head::Faults& Faults() { return m_head->GetFaults(); }

    RequestedHead m_head{SmallHeadDescription()};
};

TEST_F(BoardCommands, FirmwareIsAskedForWithoutAConnection) {
    const CommandResult result = RunHere({"firmware", "--board", "VH3267-0001"});
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_EQ(result.output, "firmware 1.4.0\n");
    EXPECT_EQ(result.figures["firmware"], "1.4.0");
    EXPECT_THAT(m_head->GetJournal().Texts({"zr3DInitHidDev", "OpenCamera"}), IsEmpty());
}

TEST_F(BoardCommands, ABoardThatDoesNotTellItsFirmwareIsNotConnected) {
    EXPECT_TRUE(Faults().Fail("zr3DQueryFirmwareVersionFast", 1));
    const CommandResult result = RunHere({"firmware"});
    EXPECT_EQ(result.code, ExitCode::NotConnected);
    EXPECT_EQ(result.figures["firmware"], nullptr);
    EXPECT_EQ(RunHere({"firmware", "--board", "OTHER"}).code, ExitCode::NotConnected);
}

TEST_F(BoardCommands, ResetReachesTheBoardOrItsFpga) {
    EXPECT_EQ(RunHere({"reset", "--fpga"}).output, "FPGA reset\n");
    EXPECT_EQ(RunHere({"reset", "--device"}).figures["reset"], "device");
    EXPECT_THAT(BoardChanges(*m_head),
                ElementsAre("zr3DResetFPGA() = true", "zr3DResetDevice() = true"));
}

TEST_F(BoardCommands, ResetOfACertainBoardConnectsToIt) {
    EXPECT_EQ(RunHere({"reset", "--fpga", "--board", "VH3267-0001"}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"reset", "--fpga", "--board", "OTHER"}).code, ExitCode::NotConnected);
    EXPECT_THAT(BoardChanges(*m_head), ElementsAre("zr3DResetFPGA() = true"));
}

TEST_F(BoardCommands, ARefusedResetIsTold) {
    EXPECT_TRUE(Faults().Fail("zr3DResetDevice", 1));
    const CommandResult result = RunHere({"reset", "--device"});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, StartsWith("reset the device: "));
}

TEST_F(BoardCommands, ReconnectEndsWithABoardThatAnswers) {
    const CommandResult result = RunHere({"reconnect"});
    EXPECT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_EQ(result.figures["answers"], true);
    EXPECT_THAT(result.output, StartsWith("reconnected; the board answered after "));
    EXPECT_EQ(m_head->GetJournal().Texts({"zr3DInitHidDev"}).size(), 2U);
}

TEST_F(BoardCommands, ASlowReconnectionLeavesTheBoardItsTimeToAnswer) {
    // Longer than the timeout, when connecting and when reconnecting.
    EXPECT_TRUE(Faults().Slow("StartCamera", std::chrono::milliseconds(3200), 2));
    const CommandResult result = RunHere({"reconnect", "--timeout", "3"});
    EXPECT_EQ(result.code, ExitCode::Done) << result.message;
}

TEST_F(BoardCommands, UserInfoKeepsText) {
    const CommandResult written = RunHere({"user-info", "write", "3", "bench 7"});
    EXPECT_EQ(written.code, ExitCode::Done) << written.message;
    const CommandResult read = RunHere({"user-info", "read", "3"});
    EXPECT_EQ(read.output, "page 3: bench 7\n");
    EXPECT_EQ(read.figures["page"], 3);
    EXPECT_EQ(read.figures["text"], "bench 7");
    EXPECT_EQ(read.figures["hex"].get<std::string>(),
              "62656e63682037" + std::string(2 * (256 - 7), '0'));
    EXPECT_EQ(RunHere({"user-info", "read", "3", "--hex"}).output, "page 3: 62656e63682037\n");
    EXPECT_EQ(RunHere({"user-info", "read", "4"}).output, "page 4 is empty\n");
}

TEST_F(BoardCommands, UserInfoKeepsBytes) {
    EXPECT_EQ(RunHere({"user-info", "write", "15", "ff0041", "--hex"}).code, ExitCode::Done);
    const CommandResult read = RunHere({"user-info", "read", "15"});
    EXPECT_EQ(read.output, "page 15: ff0041\n");
    EXPECT_EQ(read.figures["text"], nullptr);
}

TEST_F(BoardCommands, UserInfoTakesAWholePageAndNoByteMore) {
    EXPECT_EQ(RunHere({"user-info", "write", "0", std::string(256, 'x')}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"user-info", "read", "0"}).figures["text"].get<std::string>().size(), 256U);
    EXPECT_EQ(RunHere({"user-info", "write", "0", ""}).code, ExitCode::Done);
    EXPECT_EQ(RunHere({"user-info", "read", "0"}).output, "page 0 is empty\n");
    m_head->GetJournal().Clear();
    EXPECT_EQ(RunHere({"user-info", "write", "0", std::string(257, 'x')}).code, ExitCode::Usage);
    EXPECT_EQ(RunHere({"user-info", "write", "0", "abc", "--hex"}).code, ExitCode::Usage);
    EXPECT_EQ(RunHere({"user-info", "write", "0", "zz", "--hex"}).code, ExitCode::Usage);
    EXPECT_THAT(m_head->GetJournal().Texts(), IsEmpty());
}

TEST_F(BoardCommands, AUserMemoryThatFailsIsTold) {
    EXPECT_TRUE(Faults().Fail("zr3DWriteUserInfomation", 1));
    const CommandResult written = RunHere({"user-info", "write", "3", "x"});
    EXPECT_EQ(written.code, ExitCode::DeviceRefused);
    EXPECT_THAT(written.message, StartsWith("write page 3 of the user memory: "));
    EXPECT_TRUE(Faults().Fail("zr3DReadUserInfomation", 1));
    EXPECT_EQ(RunHere({"user-info", "read", "3"}).code, ExitCode::DeviceRefused);
}

TEST(UserInfoText, HexGoesBothWays) {
    EXPECT_EQ(korvexctl::ToHex(std::string_view("\x00\x7f\xff", 3)), "007fff");
    EXPECT_EQ(korvexctl::FromHex("007FfF"), std::string("\x00\x7f\xff", 3));
    EXPECT_EQ(korvexctl::FromHex(""), "");
    for (const char* digits : {"0", "0g", " 0", "0x", "-1", "00 "}) {
        EXPECT_EQ(korvexctl::FromHex(digits), std::nullopt) << digits;
    }
}

TEST_F(BoardCommands, UsbSaysYes) {
    const CommandResult result = RunHere({"usb"});
    EXPECT_EQ(result.code, ExitCode::Done);
    EXPECT_EQ(result.output, "USB 3: yes\n");
    EXPECT_EQ(result.figures["usb3"], true);
}

TEST(BoardCommandsOnUsb2, UsbSaysWhatToDo) {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.usbSpeed = 3;
    const RequestedHead head(description);
    const CommandResult result = RunHere({"usb"});
    EXPECT_EQ(result.code, ExitCode::NotOnUsb3);
    EXPECT_EQ(result.figures["usb3"], false);
    EXPECT_THAT(result.output, HasSubstr("USB 3: no\n  - use a USB 3 port"));
}

class WithoutHeadAtAll : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(WithoutHeadAtAll, EveryCommandSaysSo) {
    std::vector<std::string> command = GetParam();
    command.emplace_back("--json");
    const ChildResult result = RunKorvexctl(command);
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_THAT((std::vector<int>{3, 4}), Contains(result.exitCode));
    EXPECT_EQ(document["error"]["exit_code"], result.exitCode);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: "));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, WithoutHeadAtAll,
    ::testing::Values(std::vector<std::string>{"get"},
                      std::vector<std::string>{"set", "exposure.0", "5", "project", "0"},
                      std::vector<std::string>{"status"}, std::vector<std::string>{"snap"},
                      std::vector<std::string>{"snap-ir"}, std::vector<std::string>{"firmware"},
                      std::vector<std::string>{"reset", "--fpga"},
                      std::vector<std::string>{"reset", "--device", "--board", "X"},
                      std::vector<std::string>{"reconnect"},
                      std::vector<std::string>{"user-info", "read", "0"},
                      std::vector<std::string>{"user-info", "write", "0", "x"},
                      std::vector<std::string>{"distance", "1"}, std::vector<std::string>{"usb"},
                      std::vector<std::string>{"profile", "save", NothingFile()}),
    [](const auto& row) { return support::CaseName(row.param); });

class BadCommandLines : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(BadCommandLines, AreRefused) {
    const ChildResult result = RunKorvexctl(GetParam());
    EXPECT_EQ(result.exitCode, static_cast<int>(ExitCode::Usage));
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.error, HasSubstr("--help"));
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, BadCommandLines,
    ::testing::Values(std::vector<std::string>{"set"}, std::vector<std::string>{"profile"},
                      std::vector<std::string>{"profile", "load"},
                      std::vector<std::string>{"profile", "eat", "x"},
                      std::vector<std::string>{"reset"},
                      std::vector<std::string>{"reset", "--fpga", "--device"},
                      std::vector<std::string>{"user-info"},
                      std::vector<std::string>{"user-info", "read"},
                      std::vector<std::string>{"user-info", "read", "16"},
                      std::vector<std::string>{"user-info", "read", "-1"},
                      std::vector<std::string>{"user-info", "write", "1"},
                      std::vector<std::string>{"status", "--seconds", "0"},
                      std::vector<std::string>{"status", "--mode", "dark"},
                      std::vector<std::string>{"snap", "--camera", "4"},
                      std::vector<std::string>{"snap", "--exposure", "25.6"},
                      std::vector<std::string>{"snap", "--exposure", "0"},
                      std::vector<std::string>{"snap", "--gain", "64"},
                      std::vector<std::string>{"snap", "--route", "3"},
                      std::vector<std::string>{"snap-ir", "--exposure", "5"},
                      std::vector<std::string>{"snap-ir", "--gain", "1", "2", "3"},
                      std::vector<std::string>{"reconnect", "--timeout", "nan"},
                      std::vector<std::string>{"reconnect", "--timeout", "2.9"},
                      std::vector<std::string>{"distance"}),
    [](const auto& row) { return support::CaseName(row.param); });

TEST(KorvexctlHelp, NamesUnitAndRangeOfEverySetting) {
    for (const char* command : {"get", "set", "profile"}) {
        EXPECT_THAT(RunKorvexctl({command, "--help"}).output,
                    HasSubstr("laser-line-duty: percent, 0 to 100"));
    }
    const std::string snap = RunKorvexctl({"snap", "--help"}).output;
    EXPECT_THAT(std::regex_replace(snap, std::regex("\\s+"), " "),
                HasSubstr("ms, 0.1 to 25.5 in steps of 0.1 (default 5)"));
    EXPECT_THAT(RunKorvexctl({"distance", "--help"}).output, HasSubstr("0 to 3"));
}

}  // namespace

}  // namespace Korvex3Sync::tests
