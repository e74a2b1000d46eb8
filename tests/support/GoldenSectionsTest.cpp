#include "support/GoldenSections.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "support/Environment.h"

namespace Korvex3Sync::tests::support {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A folder with two golden files, and the notes of what was used of them.
class UsedGolden : public testing::Test {
protected:
    UsedGolden() {
        std::filesystem::create_directories(m_folder);
        Write("One", "# head\n\n[first]\ninfo \"[no section]\"\n\n[second]\n");
        Write("Two", "[first]\n");
        SetVariable(kGoldenUsedVariable, m_used.string());
    }
    ~UsedGolden() override {
        if (m_before.empty()) {
            RemoveVariable(kGoldenUsedVariable);
        } else {
            SetVariable(kGoldenUsedVariable, m_before);
        }
        std::filesystem::remove_all(m_folder);
        std::filesystem::remove(m_used);
    }
    void Write(const std::string& operation, const std::string& text) const {
        std::ofstream(m_folder / (operation + ".txt")) << text;
    }
    std::vector<std::string> Unused() const { return UnusedGolden(m_folder, m_used); }

    const std::string m_before =
        std::getenv(kGoldenUsedVariable) != nullptr ? std::getenv(kGoldenUsedVariable) : "";
    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("sections_" + std::to_string(::getpid()));
    const std::filesystem::path m_used = m_folder.string() + ".used";
};

TEST_F(UsedGolden, IsNothingWithoutANote) {
    EXPECT_THAT(Unused(), ElementsAre("One [first]", "One [second]", "Two [first]"));
}

TEST_F(UsedGolden, IsWhatWasNotedOfItsOwnFile) {
    NoteGoldenUsed("One", "first");
    NoteGoldenUsed("One", "first");
    EXPECT_THAT(Unused(), ElementsAre("One [second]", "Two [first]"));
    NoteGoldenUsed("One", "second");
    NoteGoldenUsed("Two", "first");
    EXPECT_THAT(Unused(), IsEmpty());
}

TEST_F(UsedGolden, IsNeitherAFileWithoutSectionsNorTheSecondSectionOfAName) {
    Write("One", "no section\n");
    Write("Two", "[first]\n[first]\n");
    NoteGoldenUsed("Two", "first");
    EXPECT_THAT(Unused(), ElementsAre("One", "Two [first]"));
}

TEST_F(UsedGolden, IsNotNotedUnasked) {
    RemoveVariable(kGoldenUsedVariable);
    NoteGoldenUsed("One", "first");
    EXPECT_FALSE(std::filesystem::exists(m_used));
}

}  // namespace
}  // namespace Korvex3Sync::tests::support
