#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "korvexctl/Korvexctl.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
    EXPECT_THAT(FileNames(m_out), ElementsAre("contact-sheet.png", "scan.json", "set_000_color.png",
                                              "set_000_left.png", "set_000_right.png"));
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
                            "set_030_left.png", "set_030_right.png", "contact-sheet.png"));
}

TEST_F(KorvexctlScan, TheContactSheetHasARowForEachOfAtMostEightSets) {
    const std::vector<std::pair<int, int>> setsAndRows{{3, 3}, {40, 8}};
    for (const auto& [sets, rows] : setsAndRows) {
        const ChildResult result = Scan({"--sets", std::to_string(sets), "--keep", "0", "--mode",
                                         "laser", "--json", "--out", m_out.string()});
        ASSERT_EQ(result.exitCode, 0) << result.error;
        EXPECT_THAT(ParseJson(result.output)["files"], ElementsAre("contact-sheet.png"));
        const DecodedPng sheet = DecodePng(ReadText(m_out / "contact-sheet.png"));
        EXPECT_EQ(sheet.channels, 3);
        // Two columns: this mode has no colour.
        EXPECT_EQ(sheet.width, 4 + 2 * (kSmallWidth + 4));
        EXPECT_EQ(sheet.height, 15 + rows * (15 + kSmallHeight) + 4);
    }
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

TEST_F(KorvexctlScan, SettingsReachTheFigures) {
    const ChildResult result = Scan({"--sets", "2", "--json", "--period", "20", "--laser-mode", "3",
                                     "--laser-duty", "40", "--strobe-duty", "70", "--ir-level", "4",
                                     "--brightness", "30", "--projector-duty", "20"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(ParseJson(result.output)["settings"], (nlohmann::json{{"mode", "laser-color"},
                                                                    {"period_ms", 20},
                                                                    {"laser_mode", 3},
                                                                    {"laser_duty_percent", 40},
                                                                    {"brightness_percent", 30},
                                                                    {"projector_duty_percent", 20},
                                                                    {"strobe_duty_percent", 70},
                                                                    {"ir_level", 4}}));
}

TEST_F(KorvexctlScan, ATerminalShowsProgressAndAFileDoesNot) {
    const std::string scan =
        "'" KORVEX_KORVEXCTL "' '--virtual=" + m_head.string() + "' scan --sets 20";
    const ChildResult onTerminal =
        RunChild({"script", "--quiet", "--return", "--command", scan, "/dev/null"}, WithoutHead());
    EXPECT_EQ(onTerminal.exitCode, 0) << onTerminal.output;
    EXPECT_THAT(onTerminal.output, HasSubstr("] 20/20 sets"));
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
    const std::vector<std::string> earlier{"contact-sheet.png", "scan.json", "set_005_left.png",
                                           "set_005_right.png", "set_1234_color.png"};
    const std::vector<std::string> others{
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
    expected.insert(expected.end(), {"contact-sheet.png", "scan.json", "set_000_left.png",
                                     "set_000_right.png", "set_007_left.png"});
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

TEST_F(KorvexctlScan, AScanThatFindsNoHeadLeavesTheEarlierOne) {
    std::filesystem::create_directories(m_out);
    WriteText(m_out / "scan.json", "of before");
    const ChildResult result = RunKorvexctl({"scan", "--out", m_out.string()});
    EXPECT_EQ(result.exitCode, 3) << result.error;
    EXPECT_THAT(FileNames(m_out), ElementsAre("scan.json"));
    EXPECT_EQ(ReadText(m_out / "scan.json"), "of before");
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
