#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the platform libraries' stand-ins and programs that see only the public headers declare.
bool MayStandOutside(const std::string& file) {
    static const std::set<std::string> kOutside{
        "tests/TestHeaders.cpp", "tests/interface/RecordedScan.cpp",
        "tests/recorder/RecordedBoard.cpp", "tests/recorder/RecordedCamera.cpp",
        "tests/recorder/RecordedUsbTree.cpp"};
    return kOutside.contains(file);
}

/// Test files whose name or namespace is not the one of all the others.
std::vector<std::string> NamingFaults(const SourceTree& tree) {
    static const std::regex kTest("(^|\n)TEST(_F|_P)?\\(");
    static const std::regex kNamespace("(^|\n)namespace Korvex3Sync::tests(::\\w+)? \\{");
    std::vector<std::string> faults;
    for (const auto& [file, text] : tree) {
        const bool hasTests = std::regex_search(text, kTest);
        if (hasTests != file.ends_with("Test.cpp")) {
            faults.push_back(file + (hasTests ? ": has tests and is not named *Test.cpp"
                                              : ": is named *Test.cpp and has no tests"));
        }
        if (!std::regex_search(text, kNamespace) && !MayStandOutside(file)) {
            faults.push_back(file + ": is not in Korvex3Sync::tests");
        }
    }
    return faults;
}

TEST(TestNaming, FaultsAreFound) {
    const std::string start = "namespace Korvex3Sync::tests {\n";
    EXPECT_THAT(NamingFaults({{"tests/a/A.cpp", start + "TEST_F(A, B) {}\n"}}),
                ElementsAre("tests/a/A.cpp: has tests and is not named *Test.cpp"));
    EXPECT_THAT(NamingFaults({{"tests/a/ATest.cpp", start}}),
                ElementsAre("tests/a/ATest.cpp: is named *Test.cpp and has no tests"));
    for (const char* other : {"namespace Korvex3Sync {\n", "namespace Korvex3Sync::testsuite {\n",
                              "namespace support {\n", "namespace {\n", ""}) {
        EXPECT_THAT(NamingFaults({{"tests/a/A.h", other}}),
                    ElementsAre("tests/a/A.h: is not in Korvex3Sync::tests"))
            << other;
    }
}

TEST(TestNaming, WhatFollowsTheSchemeIsNoFault) {
    EXPECT_THAT(
        NamingFaults({{"tests/a/ATest.cpp", "namespace Korvex3Sync::tests {\nTEST(A, B) {}\n"},
                      {"tests/a/A.h", "#pragma once\nnamespace Korvex3Sync::tests::support {\n"},
                      {"tests/recorder/RecordedBoard.cpp", "namespace zr3DHandiDLPdev {\n"}}),
        IsEmpty());
}

TEST(TestNaming, HoldsInTheWholeProject) {
    const SourceTree tree = ReadSourceTree({"tests"});
    ASSERT_TRUE(tree.contains("tests/project/TestNamingTest.cpp"));
    EXPECT_THAT(NamingFaults(tree), IsEmpty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
