#include <gtest/gtest.h>

#include <algorithm>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

TEST(Readme, ShowsTheFirstProgramAsItIsBuilt) {
    const std::string readme = ReadProjectFile("README.md");
    const std::string fence = "```cpp\n";
    const auto start = readme.find(fence);
    ASSERT_NE(start, std::string::npos) << "README.md has no C++ program";
    const auto end = readme.find("```", start + fence.size());
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(readme.substr(start + fence.size(), end - start - fence.size()),
              ReadProjectFile("examples/first_scan.cpp"));
}

TEST(Readme, ItsFirstProgramFitsOnOnePage) {
    const std::string program = ReadProjectFile("examples/first_scan.cpp");
    EXPECT_LE(std::count(program.begin(), program.end(), '\n'), 30);
}

}  // namespace

}  // namespace Korvex3Sync::tests
