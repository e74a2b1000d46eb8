#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "platform/include/BoardFacts.h"
#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

constexpr char kRule[] = "packaging/70-korvex3sync.rules";

std::string Hex(unsigned id) {
    std::ostringstream text;
    text << std::hex << std::setw(4) << std::setfill('0') << id;
    return text.str();
}

/// The lines that are no comments.
std::vector<std::string> Rules() {
    std::istringstream lines(ReadProjectFile(kRule));
    std::vector<std::string> rules;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with('#')) {
            rules.push_back(line);
        }
    }
    return rules;
}

TEST(UdevRule, NamesTheBoardAsTheLibraryDoes) {
    EXPECT_THAT(
        Rules(),
        AllOf(SizeIs(2),
              Each(AllOf(HasSubstr("{idVendor}==\"" + Hex(hardware::kBoardVendor) + '"'),
                         HasSubstr("{idProduct}==\"" + Hex(hardware::kBoardProduct) + '"')))));
}

/// udev gives "uaccess" its meaning in a rule file with the number 73.
TEST(UdevRule, IsReadBeforeItsTagIsLookedAt) {
    EXPECT_THAT(Rules(), Each(HasSubstr("TAG+=\"uaccess\"")));
    EXPECT_LT(std::stoi(std::string(kRule).substr(std::string("packaging/").size())), 73);
}

TEST(UdevRule, IsWrittenInOnePlace) {
    SourceTree tree = ReadSourceTree({"src", "programs", "include"});
    for (const char* page : {"docs/troubleshooting.md", "docs/health.md", "docs/korvexctl.md",
                             "docs/guide.md", "README.md", "CONTRIBUTING.md"}) {
        tree[page] = ReadProjectFile(page);
    }
    for (const auto& [path, text] : tree) {
        EXPECT_THAT(text, Not(HasSubstr("{idVendor}=="))) << path;
    }
    EXPECT_THAT(tree["docs/troubleshooting.md"], HasSubstr(kRule));
}

/// Pages that name the board on the USB by its numbers, in hexadecimal.
TEST(UdevRule, PagesNameTheBoardByTheSameNumbers) {
    const std::string id = Hex(hardware::kBoardVendor) + ':' + Hex(hardware::kBoardProduct);
    EXPECT_THAT(ReadProjectFile("docs/troubleshooting.md"), HasSubstr("`lsusb -d " + id + '`'));
    EXPECT_THAT(ReadProjectFile("docs/board-protocol.md"), HasSubstr("USB device `" + id + '`'));
}

}  // namespace

}  // namespace Korvex3Sync::tests
