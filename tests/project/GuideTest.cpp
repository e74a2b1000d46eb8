#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "project/SourceTree.h"
#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

namespace {

constexpr char kGuide[] = "docs/guide.md";
constexpr char kSamples[] = "examples/guide";

/// The lines without leading blanks, because samples in the guide are not indented.
std::string WithoutIndentation(const std::string& text) {
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        const auto start = line.find_first_not_of(' ');
        result += (start == std::string::npos ? "" : line.substr(start)) + '\n';
    }
    return result;
}

/// The fenced blocks of a language.
std::vector<std::string> Blocks(const std::string& text, const std::string& language) {
    const std::string open = "```" + language + '\n';
    std::vector<std::string> blocks;
    for (auto start = text.find(open); start != std::string::npos; start = text.find(open, start)) {
        start += open.size();
        const auto end = text.find("```", start);
        blocks.push_back(text.substr(start, end - start));
        start = end;
    }
    return blocks;
}

/// The pages of `docs/`: their names and texts.
SourceTree Pages() {
    SourceTree pages;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(KORVEX_SOURCE_DIR) / "docs")) {
        if (entry.path().extension() == ".md") {
            const std::string name = entry.path().filename().string();
            pages.emplace(name, ReadProjectFile("docs/" + name));
        }
    }
    return pages;
}

TEST(Guide, ShowsItsSamplesAsTheyAreBuilt) {
    EXPECT_GE(Blocks(ReadProjectFile(kGuide), "cpp").size(), 10u) << "the blocks were not found";
    const SourceTree samples = ReadSourceTree({kSamples});
    for (const auto& [page, text] : Pages()) {
        for (const std::string& block : Blocks(text, "cpp")) {
            const bool stands =
                std::any_of(samples.begin(), samples.end(), [&](const auto& sample) {
                    return WithoutIndentation(sample.second).find(WithoutIndentation(block)) !=
                           std::string::npos;
                });
            EXPECT_TRUE(stands) << page << ", in no file of " << kSamples << ":\n" << block;
        }
    }
}

TEST(Guide, ShowsTheHeadFilesOfItsTests) {
    const std::string samples = kSamples;
    EXPECT_THAT(Blocks(ReadProjectFile(kGuide), "toml"),
                testing::ElementsAre(ReadProjectFile(samples + "/small_head.toml"),
                                     ReadProjectFile(samples + "/unplugged_head.toml")));
}

TEST(Guide, NamesEverySampleFile) {
    const std::string guide = ReadProjectFile(kGuide);
    for (const auto& [path, text] : ReadSourceTree({kSamples})) {
        const std::string file = path.substr(std::string(kSamples).size() + 1);
        EXPECT_NE(guide.find('`' + file + '`'), std::string::npos) << file;
    }
}

struct SampleRow {
    const char* name;
    /// What its output holds when it has done its work over the virtual head.
    std::vector<std::string> output;

    friend void PrintTo(const SampleRow& row, std::ostream* stream) { *stream << row.name; }
};

class GuideSample : public testing::TestWithParam<SampleRow> {};

/// Runs a sample; `head` is what KORVEX_VIRTUAL_HEAD says.
ChildResult RunSample(const std::string& name, const std::string& head) {
    ChildOptions options;
    options.environment = {{"KORVEX_VIRTUAL_HEAD", head}};
    return RunChild({KORVEX_GUIDE_SAMPLES "/guide_" + name}, options);
}

std::string HeadFile(const std::string& name) {
    return KORVEX_SOURCE_DIR "/examples/guide/" + name;
}

TEST_P(GuideSample, DoesItsWorkOverTheVirtualHead) {
    const auto result = RunSample(GetParam().name, HeadFile("small_head.toml"));
    EXPECT_EQ(result.exitCode, 0) << result.error;
    for (const std::string& text : GetParam().output) {
        EXPECT_THAT(result.output, testing::HasSubstr(text));
    }
}

TEST(Guide, ReconnectBringsAnUnpluggedHeadBack) {
    const auto result = RunSample("reconnect", HeadFile("unplugged_head.toml"));
    EXPECT_EQ(result.exitCode, 0) << result.error;
    const auto silent = result.output.find("the board is silent\n");
    ASSERT_NE(silent, std::string::npos) << result.output;
    EXPECT_THAT(result.output.substr(silent), testing::HasSubstr("reconnected\n20 sets\n"));
}

TEST_P(GuideSample, SaysThatThereIsNoHead) {
    const auto result = RunSample(GetParam().name, "");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, testing::HasSubstr("no camera found\n"));
}

INSTANTIATE_TEST_SUITE_P(
    All, GuideSample,
    testing::Values(
        SampleRow{"find_cameras",
                  {"camera KV00A1001, 320 x 240, colour\n",
                   "the board does not run at USB 3 speed\n", "firmware 1.4.0"}},
        SampleRow{"light", {"laser lines 60 %, strobe 80 100 100 %, a trigger every 10 ms\n"}},
        SampleRow{"scan", {"images of 320 x 240\n", " with colour\n", "sets dropped by this"}},
        SampleRow{"exposure", {"exposure 8.5 ms, gain 3\n"}},
        SampleRow{"snapshot", {"an image of 76800 bytes\n"}},
        SampleRow{"user_memory", {"calibrated by bench 7\n"}},
        SampleRow{"reconnect", {"reconnected\n20 sets\n"}}),
    [](const auto& row) { return row.param.name; });

}  // namespace

}  // namespace Korvex3Sync::tests
