#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sstream>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/cli/TimeText.h"
#include "support/Terminal.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class KorvexctlScan : public ::testing::Test {
protected:
    ChildResult Scan(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--virtual=" + m_head.string(), "scan"});
        return RunKorvexctl(arguments);
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_head = WriteSmallHead(m_folder.Path());
    std::filesystem::path m_out = m_folder.Path() / "a" / "scan";
};

TEST_F(KorvexctlScan, WritesPicturesAndFiguresOfTheFullSize) {
    const ChildResult result =
        RunKorvexctl({"--virtual", "scan", "--sets", "20", "--keep", "1", "--out", m_out.string()});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.output, HasSubstr("sets 20 of 20: "));
    EXPECT_THAT(result.output, HasSubstr("sets/s"));
    EXPECT_THAT(FileNames(m_out),
                ElementsAre("contact-sheet.png", "run.svg", "scan.json", "set_000_color.png",
                            "set_000_left.png", "set_000_right.png", "sets.csv"));
    for (const char* name : {"set_000_left.png", "set_000_right.png", "set_000_color.png"}) {
        const DecodedPng picture = DecodePng(ReadText(m_out / name));
        EXPECT_EQ(picture.width, 1280);
        EXPECT_EQ(picture.height, 1024);
        EXPECT_EQ(picture.channels, std::string(name).find("color") == std::string::npos ? 1 : 3);
    }
}

TEST_F(KorvexctlScan, TheJsonDocumentIsTheOneInTheFolder) {
    const ChildResult result =
        Scan({"--sets", "30", "--keep", "3", "--json", "--out", m_out.string()});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(result.output, ReadText(m_out / "scan.json"));
    EXPECT_THAT(result.error, IsEmpty());

    const nlohmann::json document = ParseJson(result.output);
    EXPECT_EQ(document["sets"]["asked"], 30);
    EXPECT_EQ(document["sets"]["delivered"], 30);
    EXPECT_EQ(
        document["sets"]["with_color"].get<int>() + document["sets"]["without_color"].get<int>(),
        30);
    EXPECT_EQ(document["sets"]["odd"], 0);
    EXPECT_GT(document["sets_per_second"].get<double>(), 0);
    EXPECT_GT(document["seconds"].get<double>(), 0);
    EXPECT_EQ(document["interrupted"], false);
    EXPECT_EQ(document["board_lost"], false);
    EXPECT_EQ(document["cameras"].size(), 2U);
    EXPECT_EQ(document["firmware"], "1.4.0");
    EXPECT_EQ(document["settings"]["mode"], "laser-color");
    EXPECT_FALSE(document.contains("error"));
    auto names = document["files"].get<std::vector<std::string>>();
    names.emplace_back("scan.json");
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, FileNames(m_out));
}

TEST_F(KorvexctlScan, KeptSetsAreSpreadOverTheScan) {
    const ChildResult result =
        Scan({"--sets", "40", "--keep", "4", "--mode", "laser", "--json", "--out", m_out.string()});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(ParseJson(result.output)["files"],
                ElementsAre("set_000_left.png", "set_000_right.png", "set_010_left.png",
                            "set_010_right.png", "set_020_left.png", "set_020_right.png",
                            "set_030_left.png", "set_030_right.png", "contact-sheet.png",
                            "sets.csv", "run.svg"));
}

TEST_F(KorvexctlScan, TheContactSheetShowsTheSavedSets) {
    const ChildResult result =
        Scan({"--sets", "30", "--keep", "3", "--period", "30", "--json", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    const DecodedPng sheet = DecodePng(ReadText(m_out / "contact-sheet.png"));
    EXPECT_EQ(sheet.channels, 3);
    ASSERT_EQ(sheet.width, 4 + 3 * (kSmallWidth + 4));
    constexpr int kRowStep = 15 + kSmallHeight;
    for (int row = 0; row < 3; ++row) {
        // Colour images are not brightened, and these are too small to be scaled down.
        const DecodedPng saved =
            DecodePng(ReadText(m_out / ("set_0" + std::to_string(row) + "0_color.png")));
        const int top = sheet.height - 4 - (3 - row) * kRowStep + 15;
        const int left = 4 + 2 * (kSmallWidth + 4);
        for (int y = 0; y < kSmallHeight; ++y) {
            const auto shown = sheet.bytes.begin() + 3 * ((top + y) * sheet.width + left);
            ASSERT_TRUE(std::equal(shown, shown + 3 * kSmallWidth,
                                   saved.bytes.begin() + 3 * y * kSmallWidth))
                << "row " << row << ", line " << y;
        }
    }
}

TEST_F(KorvexctlScan, WithoutPicturesThereIsNoSheet) {
    const ChildResult result = Scan({"--sets", "3", "--keep", "0", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(FileNames(m_out), ElementsAre("run.svg", "scan.json", "sets.csv"));
}

TEST_F(KorvexctlScan, TheFiguresTellWhenWithWhatAndWhichSetsWereKept) {
    const auto before = std::chrono::system_clock::now() - std::chrono::milliseconds(1);
    const ChildResult result = Scan(
        {"--sets", "10", "--keep", "2", "--json", "--exposure", "8.5", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    const nlohmann::json figures = ParseJson(result.output);
    EXPECT_GE(figures["date"].get<std::string>(), korvexctl::TimeText(before));
    EXPECT_LE(figures["date"].get<std::string>(),
              korvexctl::TimeText(std::chrono::system_clock::now()));
    const std::string version = ParseJson(RunKorvexctl({"--version", "--json"}).output)["version"];
    EXPECT_EQ(figures["version"], version);
    EXPECT_EQ(figures["board_serial"], "VH3267-0001");
    EXPECT_EQ(figures["ended_by"], "sets");
    EXPECT_EQ(figures["settings"]["values"]["exposure.1"], 8.5);
    EXPECT_EQ(figures["settings"]["values"]["gain.0"], 0);
    ASSERT_EQ(figures["pictures"].size(), 2U);
    const nlohmann::json& second = figures["pictures"][1];
    EXPECT_EQ(second["number"], 5);
    EXPECT_GT(second["seconds"].get<double>(), 0);
    EXPECT_EQ(second["files"].front(), "set_005_left.png");

    std::istringstream lines(ReadText(m_out / "sets.csv"));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "number,key,seconds,interval_ms,color,lost_before,callback_us,kept,recorded");
    int number = 0;
    for (; std::getline(lines, line); ++number) {
        EXPECT_THAT(line, StartsWith(std::to_string(number) + ","));
        if (number == 5) {
            EXPECT_THAT(line, StartsWith("5," + second["key"].dump() + ","));
            EXPECT_THAT(line, ::testing::EndsWith(",1,0"));
        }
    }
    EXPECT_EQ(number, 10);
}

TEST_F(KorvexctlScan, EveryModeDeliversItsSets) {
    const std::vector<std::pair<std::string, int>> modes{
        {"laser", 0}, {"pattern", 0}, {"pattern-color", 10}, {"laser-color", 10}};
    for (const auto& [mode, color] : modes) {
        // Slow enough that no colour frame is late, whatever else the machine does.
        const ChildResult result =
            Scan({"--sets", "10", "--mode", mode, "--period", "50", "--json"});
        EXPECT_EQ(result.exitCode, 0) << mode << ": " << result.error;
        const nlohmann::json sets = ParseJson(result.output)["sets"];
        EXPECT_EQ(sets["delivered"], 10) << mode;
        EXPECT_EQ(sets["with_color"], color) << mode;
    }
}

TEST_F(KorvexctlScan, ATerminalShowsProgressAndAFileDoesNot) {
    const ChildResult onTerminal = RunChild(
        OnTerminal(KorvexctlCommand({"--virtual=" + m_head.string(), "scan", "--sets", "20"})),
        WithoutHead());
    EXPECT_EQ(onTerminal.exitCode, 0) << onTerminal.output;
    EXPECT_THAT(onTerminal.error, IsEmpty());
    EXPECT_THAT(onTerminal.output, HasSubstr("[########################] 20/20 sets  "));
    EXPECT_THAT(onTerminal.output, HasSubstr("/s  0 lost  0 s left"));
    const ChildResult intoFile = Scan({"--sets", "20"});
    EXPECT_THAT(intoFile.output + intoFile.error, Not(HasSubstr("20/20 sets")));
}

TEST_F(KorvexctlScan, WithoutAFolderNothingIsWritten) {
    const ChildResult result = Scan({"--sets", "3", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(ParseJson(result.output)["files"], IsEmpty());
    EXPECT_THAT(FileNames(m_folder.Path()), ElementsAre("head.toml"));
}

TEST_F(KorvexctlScan, FilesOfAnEarlierScanAreGoneAndAllOthersStay) {
    std::filesystem::create_directories(m_out / "set_007_left.png");
    const std::vector<std::string> earlier{
        "contact-sheet.png", "scan.json",        "run.svg",           "sets.csv",
        "replay.toml",       "set_005_left.png", "set_005_right.png", "set_1234_color.png",
        "left_000007.png",   "right_000007.png", "color_1234567.png"};
    const std::vector<std::string> others{
        "left07.png",      "left_07.png",      "left_000007.jpg",    "head.toml",
        "notes.txt",       "scan.json.bak",    "set_0005_left.png",  "set_005_left.jpg",
        "set_005_leftpng", "set_005_mask.png", "set_5_left.png",     "set_+05_left.png",
        "set_x_left.png",  "set_-05_left.png", "my set_005_left.png"};
    for (const auto* names : {&earlier, &others}) {
        for (const std::string& name : *names) {
            WriteText(m_out / name, "of before");
        }
    }
    const ChildResult result =
        Scan({"--sets", "1", "--keep", "1", "--mode", "laser", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    std::vector<std::string> expected = others;
    expected.insert(expected.end(),
                    {"contact-sheet.png", "run.svg", "scan.json", "set_000_left.png",
                     "set_000_right.png", "set_007_left.png", "sets.csv"});
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(FileNames(m_out), expected);
    for (const std::string& name : others) {
        EXPECT_EQ(ReadText(m_out / name), "of before") << name;
    }
    EXPECT_EQ(ParseJson(ReadText(m_out / "scan.json"))["sets"]["asked"], 1);
}

TEST_F(KorvexctlScan, ALinkWithTheNameOfAPictureStays) {
    const auto picture = m_folder.Path() / "elsewhere.png";
    const auto link = m_out / "set_005_left.png";
    WriteText(picture, "of before");
    std::filesystem::create_directories(m_out);
    std::filesystem::create_symlink(picture, link);
    const ChildResult result = Scan({"--sets", "1", "--mode", "laser", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadText(picture), "of before");
}

TEST_F(KorvexctlScan, ALinkInTheFolderIsNotFollowedOutOfIt) {
    const auto elsewhere = m_folder.Path() / "elsewhere";
    std::filesystem::create_directories(m_out);
    const std::vector<std::string> names{"contact-sheet.png", "left_000000.png", "replay.toml",
                                         "run.svg",           "scan.json",       "set_000_left.png",
                                         "sets.csv"};
    std::filesystem::create_directories(elsewhere);
    for (const std::string& name : names) {
        WriteText(elsewhere / name, "of before");
        std::filesystem::create_symlink(elsewhere / name, m_out / name);
    }
    const ChildResult result =
        Scan({"--sets", "2", "--mode", "laser", "--record", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;
    for (const std::string& name : names) {
        EXPECT_EQ(ReadText(elsewhere / name), "of before") << name;
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(m_out / name)))
            << name;
    }
}

TEST_F(KorvexctlScan, AScanThatFindsNoHeadLeavesTheEarlierOne) {
    std::filesystem::create_directories(m_out);
    WriteText(m_out / "scan.json", "of before");
    const ChildResult result = RunKorvexctl({"scan", "--out", m_out.string()});
    EXPECT_EQ(result.exitCode, 3) << result.error;
    EXPECT_THAT(FileNames(m_out), ElementsAre("scan.json"));
    EXPECT_EQ(ReadText(m_out / "scan.json"), "of before");
}

TEST_F(KorvexctlScan, ARecordingIsReplayedToTheByte) {
    constexpr int kSets = 8;
    const auto first = m_out / "first";
    const auto second = m_out / "second";
    const auto record = [&](const std::filesystem::path& head, const std::filesystem::path& out) {
        return RunKorvexctl({"--virtual=" + head.string(), "scan", "--sets", std::to_string(kSets),
                             "--period", "50", "--keep", "1", "--record", "--json", "--out",
                             out.string()});
    };
    const ChildResult made = record(m_head, first);
    ASSERT_EQ(made.exitCode, 0) << made.error;
    EXPECT_EQ(ParseJson(made.output)["recorded"], kSets);
    EXPECT_THAT(ReadText(first / "sets.csv"), HasSubstr(",1\n"));
    const ChildResult again = record(first / "replay.toml", second);
    ASSERT_EQ(again.exitCode, 0) << again.error;
    ASSERT_EQ(ParseJson(again.output)["sets"]["with_color"], kSets);
    for (int number = 0; number < kSets; ++number) {
        for (const char* image : {"left", "right", "color"}) {
            const std::string name =
                std::string(image) + "_00000" + std::to_string(number) + ".png";
            const DecodedPng then = DecodePng(ReadText(first / name));
            EXPECT_EQ(then.channels, 1) << "the mosaic";
            EXPECT_EQ(then.bytes, DecodePng(ReadText(second / name)).bytes) << name;
        }
    }
}

TEST_F(KorvexctlScan, ReplayedPairsArriveInOrderAndUnchanged) {
    constexpr int kPairs = 5;
    const auto images = m_folder.Path() / "pairs";
    std::filesystem::create_directory(images);
    std::vector<TestImage> left;
    std::vector<TestImage> right;
    for (unsigned i = 0; i < kPairs; ++i) {
        left.push_back(RandomImage(kSmallWidth, kSmallHeight, 2 * i));
        right.push_back(RandomImage(kSmallWidth, kSmallHeight, 2 * i + 1));
        WriteGrey(images / ("left0" + std::to_string(i) + ".png"), left.back());
        WriteGrey(images / ("right0" + std::to_string(i) + ".png"), right.back());
    }
    m_head = WriteSmallHead(m_folder.Path(), "[replay]\nfolder = \"pairs\"\n");
    const ChildResult result = Scan({"--sets", "10", "--keep", "10", "--mode", "laser", "--period",
                                     "50", "--out", m_out.string()});
    ASSERT_EQ(result.exitCode, 0) << result.error;

    // The first pixels carry marker and key.
    constexpr std::ptrdiff_t kMarked = 8;
    for (unsigned i = 0; i < 2 * kPairs; ++i) {
        const std::string name = "set_00" + std::to_string(i);
        const DecodedPng gotLeft = DecodePng(ReadText(m_out / (name + "_left.png")));
        const DecodedPng gotRight = DecodePng(ReadText(m_out / (name + "_right.png")));
        const auto same = [](const DecodedPng& got, const TestImage& sent) {
            return std::equal(got.bytes.begin() + kMarked, got.bytes.end(),
                              sent.pixels.begin() + kMarked, sent.pixels.end());
        };
        EXPECT_TRUE(same(gotLeft, left[i % kPairs])) << name;
        EXPECT_TRUE(same(gotRight, right[i % kPairs])) << name;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
