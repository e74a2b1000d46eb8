#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/files/StandardOutput.h"
#include "korvexctl/head/Boards.h"
#include "os/FakeUsb.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr int kNoCamera = 3;

TEST(KorvexctlList, ShowsBothSensorsOfTheVirtualHead) {
    const ChildResult result = RunKorvexctl({"--virtual", "list"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output,
              "camera KV00A1001  1280 x 1024  colour\ncamera KV00A1001  1280 x 1024  colour\n"
              "board VH3267-0001\n");
    EXPECT_THAT(result.error, IsEmpty());
}

TEST(KorvexctlList, JsonIsOneDocumentWithTheCameras) {
    const nlohmann::json document = ParseJson(RunKorvexctl({"list", "--virtual", "--json"}).output);
    ASSERT_EQ(document["cameras"].size(), 2U);
    EXPECT_EQ(document["cameras"][0],
              (nlohmann::json{
                  {"serial", "KV00A1001"}, {"width", 1280}, {"height", 1024}, {"color", true}}));
    EXPECT_EQ(document["boards"],
              (nlohmann::json::array({{{"serial", "VH3267-0001"}, {"where", nullptr}}})));
    EXPECT_FALSE(document.contains("error"));
}

TEST(KorvexctlList, ShowsTheHeadOfAHeadFile) {
    const TemporaryFolder folder;
    const auto file =
        WriteSmallHead(folder.Path(), "serial = \"KV77B2\"\ntype = \"KV77\"\ncolor = false\n");
    const ChildResult result =
        RunKorvexctl({"list", "--virtual=" + file.string(), "--type", "KV77"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("camera KV77B2  64 x 48  mono\n"));
}

TEST(KorvexctlList, TheEnvironmentAsksForAHeadToo) {
    const TemporaryFolder folder;
    ChildOptions options;
    options.environment = {{"KORVEX_VIRTUAL_HEAD", WriteSmallHead(folder.Path()).string()}};
    const ChildResult result = RunChild(KorvexctlCommand({"list"}), options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("64 x 48"));
}

TEST(KorvexctlList, ARefusedHeadFileOfTheEnvironmentIsRefused) {
    const TemporaryFolder folder;
    const std::string file = WriteSmallHead(folder.Path(), "widht = 64\n").string();
    ChildOptions options;
    options.environment = {{"KORVEX_VIRTUAL_HEAD", file}};
    const ChildResult result = RunChild(KorvexctlCommand({"list"}), options);
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_THAT(result.error, StartsWith("korvexctl: KORVEX_VIRTUAL_HEAD: " + file + ":4: "));
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    // What writes a better one does not need it.
    EXPECT_EQ(RunChild(KorvexctlCommand({"virtual", "new", "--force", file}), options).exitCode, 0);
    EXPECT_EQ(RunChild(KorvexctlCommand({"list"}), options).exitCode, 0);
}

TEST(KorvexctlList, ARequestGoesBeforeTheEnvironment) {
    ChildOptions options;
    options.environment = {{"KORVEX_VIRTUAL_HEAD", "/no/such/head.toml"}};
    EXPECT_EQ(RunChild(KorvexctlCommand({"list", "--virtual"}), options).exitCode, 0);
}

TEST(KorvexctlList, WithoutAHeadNothingIsSimulated) {
    const ChildResult result = RunKorvexctl({"list"});
    EXPECT_EQ(result.exitCode, kNoCamera);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_EQ(
        result.error,
        "korvexctl: no camera found (type KV00): the camera library of this build has no driver "
        "for real cameras; use --virtual for a simulated head\n");
}

TEST(KorvexctlList, AnUnknownTypeFindsNoCamera) {
    for (const std::string& type : {std::string("ZZ00"), std::string(), std::string(10'000, 'K')}) {
        const ChildResult result = RunKorvexctl({"--virtual", "list", "--json", "--type", type});
        EXPECT_EQ(result.exitCode, kNoCamera);
        const nlohmann::json document = ParseJson(result.output);
        EXPECT_THAT(document["cameras"], IsEmpty());
        EXPECT_EQ(document["error"]["exit_code"], kNoCamera);
    }
}

TEST(KorvexctlList, NamesTheBoardsThatTheSystemLists) {
    virtual_head::WithdrawVirtualHead();
    FakeUsb usb;
    usb.AddBoard("2-1", 5000, "/dev/hidraw3", "K3-0007");
    usb.AddBoard("2-2", 5000, "/dev/hidraw4");
    const auto boards = korvexctl::FindBoards(usb.Machine());
    EXPECT_EQ(korvexctl::SerialsText(boards), "K3-0007");
    const std::string where = "USB port 2-1, /dev/hidraw3";
    EXPECT_EQ(ToJson(boards)[0], (nlohmann::json{{"serial", "K3-0007"}, {"where", where}}));
    EXPECT_EQ(ToJson(boards)[1]["serial"], nullptr);
    ::testing::internal::CaptureStdout();
    {
        korvexctl::StandardOutput standardOutput(false);
        korvexctl::Output output(standardOutput, false);
        Print(boards, output);
    }
    EXPECT_THAT(::testing::internal::GetCapturedStdout(),
                AllOf(HasSubstr("board K3-0007  " + where + "\n"),
                      HasSubstr("board without a serial  USB port 2-2, ")));
}

TEST(KorvexctlList, ASimulatedBoardThatIsGoneIsNotListed) {
    const RequestedHead head(SmallHeadDescription());
    ASSERT_TRUE(head->GetFaults().Board().Plugged().Vanish({}));
    EXPECT_THAT(korvexctl::FindBoards(), IsEmpty());
    head->GetFaults().Board().Plugged().Forget();
}

TEST(KorvexctlInfo, ShowsCamerasFirmwareAndSettings) {
    const ChildResult result = RunKorvexctl({"--virtual", "info"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(
        result.output,
        AllOf(HasSubstr("camera KV00A1001"), HasSubstr("\nboard VH3267-0001\n"),
              HasSubstr("firmware 1.4.0\n"), HasSubstr("USB 3 yes\n"),
              HasSubstr("trigger-period 10 ms\n"), HasSubstr("laser-line-work-time 1000 us\n")));
}

TEST(KorvexctlInfo, JsonTellsWhatTheHeadFileSays) {
    const TemporaryFolder folder;
    const auto file =
        WriteSmallHead(folder.Path(), "[board]\nfirmware = \"9.8.7\"\nusb_speed = 3\n");
    const ChildResult result = RunKorvexctl({"info", "--json", "--virtual=" + file.string()});
    EXPECT_EQ(result.exitCode, 0);
    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["firmware"], "9.8.7");
    EXPECT_EQ(document["usb3"], false);
    EXPECT_EQ(document["cameras"].size(), 2U);
    EXPECT_EQ(document["settings"]["trigger-period"]["value"], 10);
    EXPECT_EQ(document["settings"]["strobe-duty"]["value"]["plain"], 100);
}

TEST(KorvexctlInfo, ItsSettingsAreThoseThatGetCanRead) {
    nlohmann::json readable =
        ParseJson(RunKorvexctl({"--virtual", "get", "--json"}).output)["settings"];
    ASSERT_TRUE(readable.contains("project"));
    for (auto setting = readable.begin(); setting != readable.end();) {
        setting = (*setting)["readable"] == true ? ++setting : readable.erase(setting);
    }
    EXPECT_EQ(ParseJson(RunKorvexctl({"--virtual", "info", "--json"}).output)["settings"],
              readable);
}

TEST(KorvexctlInfo, WithoutAHeadThereIsNoCamera) {
    const ChildResult result = RunKorvexctl({"info", "--json"});
    EXPECT_EQ(result.exitCode, kNoCamera);
    EXPECT_EQ(ParseJson(result.output)["error"]["exit_code"], kNoCamera);
}

TEST(KorvexctlInfo, AnotherBoardThanTheOneAskedForIsNotConnected) {
    const ChildResult result = RunKorvexctl({"--virtual", "info", "--board", "NO-SUCH-BOARD"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.error, HasSubstr("cannot connect: Connect projector failed"));
    EXPECT_THAT(result.error,
                HasSubstr("check the serial given with --board (attached: VH3267-0001), cable"));
    EXPECT_THAT(result.error, HasSubstr("korvexctl doctor"));
}

TEST(KorvexctlList, ASimulatedHeadIsAdvisedOnlyToWhoHasNone) {
    const std::string error = RunKorvexctl({"list", "--virtual", "--type", "GC"}).error;
    EXPECT_EQ(error, "korvexctl: no camera found (type GC); the simulated head has none\n");
    EXPECT_THAT(RunKorvexctl({"list"}).error, HasSubstr("; use --virtual for"));
}

TEST(KorvexctlOutput, VerboseShowsTheLibraryOnStandardErrorOnly) {
    const ChildResult result = RunKorvexctl({"--virtual", "list", "--json", "-v"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(ParseJson(result.output)["cameras"].size(), 2U);
    // Once as a log line, once printed.
    EXPECT_THAT(result.error, HasSubstr("GetAllSpecifyTypeCameraInformation tmpRealCount=2"));
    EXPECT_THAT(result.error, HasSubstr("Camera 0 gain range 0 - 16"));
}

TEST(KorvexctlOutput, AReaderThatWantsNoMoreEndsItWithoutAWord) {
    ChildOptions options;
    options.outputUnread = true;
    const ChildResult result = RunKorvexctl({"--virtual", "list"}, options);
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_THAT(result.error, IsEmpty());
}

/// A name with an escape sequence, and how it is shown.
constexpr const char* kWicked = "KV\033[31m\x7f\xC2\x9B";
constexpr const char* kEscaped = "KV\\x1B[31m\\x7F\\xC2\\x9B";

TEST(KorvexctlOutput, EscapeSequencesAreShownAsText) {
    const ChildResult error = RunKorvexctl({"set", kWicked, "1"});
    EXPECT_THAT(error.error, HasSubstr(std::string("unknown setting \"") + kEscaped + '"'));
}

TEST(KorvexctlOutput, AlsoThoseInTheNameOfAFile) {
    const TemporaryFolder folder;
    const ChildResult line =
        RunKorvexctl({"--virtual", "profile", "save", (folder.Path() / kWicked).string()});
    EXPECT_THAT(line.output, HasSubstr(std::string("/") + kEscaped + ": "));
}

TEST(KorvexctlOutput, AlsoThoseThatTheLibraryLogsAndPrints) {
    const TemporaryFolder folder;
    const auto log = folder.Path() / "log";
    const std::string printed = RunKorvexctl({"-v", "list", "--type", "\033]0;x"}).error;
    EXPECT_THAT(printed,
                AllOf(HasSubstr("Create Camera Failed: \\x1B]\n"), Not(HasSubstr("\033"))));
    const ChildResult result =
        RunKorvexctl({"-v", "--log", log.string(), "--virtual", "info", "--board", "\033[2J"});
    for (const std::string& text : {result.error, ReadText(log)}) {
        EXPECT_THAT(text, AllOf(HasSubstr("pcbSerial=\\x1B[2J\n"),
                                HasSubstr("\nCamera 0 gain range"), Not(HasSubstr("\033"))));
    }
}

TEST(KorvexctlOutput, ADocumentHasNothingButPlainCharacters) {
    const ChildResult result = RunKorvexctl({"--json", "set", std::string(kWicked) + "\xE9", "1"});
    EXPECT_TRUE(std::all_of(result.output.begin(), result.output.end(), [](char c) {
        return c == '\n' || (c >= ' ' && c <= '~');
    })) << result.output;
    EXPECT_THAT(ParseJson(result.output)["error"]["message"].get<std::string>(),
                HasSubstr("KV\033[31m\x7f\xC2\x9B\xEF\xBF\xBD"));
}

TEST(KorvexctlOutput, TheLogFileKeepsWhatTheLibraryLogsAndPrints) {
    const TemporaryFolder folder;
    const auto log = folder.Path() / "korvex.log";
    const ChildResult result = RunKorvexctl({"--virtual", "list", "--log", log.string()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_THAT(ReadText(log), AllOf(HasSubstr("GetAllSpecifyTypeCameraInformation tmpRealCount=2"),
                                     HasSubstr("Camera 0 gain range 0 - 16")));
}

}  // namespace

}  // namespace Korvex3Sync::tests
