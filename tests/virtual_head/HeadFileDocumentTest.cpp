#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

std::string Page() {
    std::ifstream stream(KORVEX_SOURCE_DIR "/docs/virtual-head.md");
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Row(const KeyRule& rule) {
    const std::string value = ValueText(rule, HeadDescription{});
    return "| `" + KeyText(rule) + "` | " + rule.meaning + " | " + ValuesText(rule) + " | " +
           (value.empty() ? "none" : '`' + value + '`') + " |\n";
}

TEST(HeadFileDocument, ListsEveryKeyAsItIsChecked) {
    std::string table;
    for (const KeyRule& rule : KeyRules()) {
        table += Row(rule);
    }
    EXPECT_NE(Page().find("| key | meaning | values | default |\n|---|---|---|---|\n" + table),
              std::string::npos)
        << "the table of keys is:\n"
        << table;
}

TEST(HeadFileDocument, ListsTheNumbersOfFaultsWithTheirRanges) {
    const std::string page = Page();
    for (const FaultNumber& number : FaultNumbers()) {
        const std::string row = "| `" + std::string(number.key) + "` | " + number.meaning + " | " +
                                std::to_string(number.lowest) + " to " +
                                std::to_string(number.highest) + " | ";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
