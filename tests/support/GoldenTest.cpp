#include "support/Golden.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/Environment.h"

namespace Korvex3Sync::tests::support {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

TEST(Output, KeepsRecordsAndPrintsInOrder) {
    Output output;
    std::printf("one\n");
    LOG(INFO) << "two";
    std::printf("three\nfour");
    LOG(WARNING) << "five\nsix ";
    LOG(ERROR) << "seven";
    EXPECT_THAT(output.End(), ElementsAre("print \"one\\n\"", "info \"GoldenTest.cpp: two\"",
                                          "print \"three\\n\"", "print \"four\"",
                                          "warning \"GoldenTest.cpp: five\\nsix \"",
                                          "error \"GoldenTest.cpp: seven\""));
}

TEST(Output, NamesTheAddressesThatItKnows) {
    Output output;
    const int known = 0;
    const int other = 0;
    output.Name(&known, "known");
    LOG(INFO) << "a=" << &known << " b=" << &other << " c=" << static_cast<void*>(nullptr);
    EXPECT_THAT(output.End(), ElementsAre("info \"GoldenTest.cpp: a=<known> b=<address> c=0\""));
}

TEST(Output, LeavesOutTheNumberOfASerialsAddress) {
    Output output;
    LOG(INFO) << "camSerials[i]=" << -389914384 << " SetCameraComplexInfo=2";
    EXPECT_THAT(
        output.End(),
        ElementsAre("info \"GoldenTest.cpp: camSerials[i]=<number> SetCameraComplexInfo=2\""));
}

TEST(Output, LeavesOutOtherThreadsAndSnapsWithoutAFrame) {
    Output output;
    std::thread([] { LOG(INFO) << "from another thread"; }).join();
    std::printf("begin Camera 3 Snap Failed\n");
    std::printf("end\n");
    EXPECT_THAT(output.End(), ElementsAre("print \"begin end\\n\""));
}

TEST(Output, HasNoPartsOfSnapsThatAnotherThreadPrints) {
    constexpr int kRounds = 500;
    constexpr int kMoreThanTheBufferOfAStreamTakes = 500;
    for (int i = 0; i < kRounds; ++i) {
        std::atomic<bool> prints{false};
        Output output;
        std::thread other([&prints] {
            for (int text = 0; text < kMoreThanTheBufferOfAStreamTakes; ++text) {
                std::fputs("Camera 3 Snap Failed\n", stdout);
                prints = true;
            }
        });
        while (!prints) {
            std::this_thread::yield();
        }
        LOG(INFO) << "logged";
        EXPECT_THAT(output.End(), ElementsAre("info \"GoldenTest.cpp: logged\""));
        other.join();
    }
}

TEST(Output, CanKeepTheOtherThreadsOnly) {
    Output output(Output::Of::kOtherThreads);
    std::thread([] { LOG(INFO) << "from another thread"; }).join();
    LOG(INFO) << "from this one";
    EXPECT_THAT(output.End(), ElementsAre("info \"GoldenTest.cpp: from another thread\""));
}

TEST(Output, RecordsNothingOnceItHasEnded) {
    Output output;
    output.End();
    LOG(INFO) << "late";
    EXPECT_THAT(output.End(), IsEmpty());
}

/// A folder with one golden file of two sections, of two lines and of none.
class Golden : public testing::Test {
protected:
    Golden() {
        std::filesystem::create_directories(m_folder);
        std::ofstream(m_folder / "Operation.txt") << m_text;
    }
    ~Golden() override {
        RemoveVariable("KORVEX_UPDATE_GOLDEN");
        std::filesystem::remove_all(m_folder);
    }
    testing::AssertionResult Matches(const std::string& section, const Lines& lines) const {
        return MatchesGoldenIn(m_folder.string(), "Operation", section, lines);
    }
    std::string Text() const {
        std::ostringstream text;
        text << std::ifstream(m_folder / "Operation.txt").rdbuf();
        return text.str();
    }

    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("golden_" + std::to_string(::getpid()));
    const std::string m_text = "# head\n\n[two lines]\ninfo \"a\"\nprint \"b\"\n\n[nothing]\n";
};

TEST_F(Golden, TheSameLinesMatch) {
    EXPECT_TRUE(Matches("two lines", {"info \"a\"", "print \"b\""}));
    EXPECT_TRUE(Matches("nothing", {}));
}

TEST_F(Golden, AnythingElseDoesNot) {
    EXPECT_FALSE(Matches("two lines", {"info \"a\"", "print \"c\""})) << "a wrong text";
    EXPECT_FALSE(Matches("two lines", {"print \"a\"", "print \"b\""})) << "a wrong kind";
    EXPECT_FALSE(Matches("two lines", {"info \"a\""})) << "a missing line";
    EXPECT_FALSE(Matches("two lines", {"info \"a\"", "print \"b\"", "print \"b\""}))
        << "an extra line";
    EXPECT_FALSE(Matches("two lines", {"print \"b\"", "info \"a\""})) << "a swapped order";
    EXPECT_FALSE(Matches("nothing", {"info \"a\""}));
    EXPECT_EQ(Text(), m_text) << "nothing is rewritten unasked";
}

TEST_F(Golden, AMissingSectionOrFileMatchesNothing) {
    EXPECT_FALSE(Matches("another", {}));
    EXPECT_FALSE(MatchesGoldenIn(m_folder.string(), "Another", "nothing", {}));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "Another.txt"));
}

TEST_F(Golden, AnUpdateRewritesItsSectionAndFails) {
    SetVariable("KORVEX_UPDATE_GOLDEN", "1");
    EXPECT_FALSE(Matches("two lines", {"info \"c\""}));
    EXPECT_EQ(Text(), "# head\n\n[two lines]\ninfo \"c\"\n\n[nothing]\n");
    EXPECT_FALSE(Matches("another", {"info \"d\""}));
    EXPECT_EQ(Text(), "# head\n\n[two lines]\ninfo \"c\"\n\n[nothing]\n\n[another]\ninfo \"d\"\n");
    EXPECT_TRUE(Matches("another", {"info \"d\""})) << "what is right needs no update";
}

}  // namespace
}  // namespace Korvex3Sync::tests::support
