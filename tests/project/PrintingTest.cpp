#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Every line outside `src/platform/os` that writes to standard output or standard error, as
/// "FILE:LINE: the line". Comments do not count.
std::vector<std::string> Prints(const SourceTree& tree) {
    static const std::regex kPrint(
        "\\bv?f?printf *\\(|\\bf?puts *\\(|\\bf?putc(har)? *\\(|\\bperror *\\(|"
        "\\bstd(out|err)\\b|\\bw?(cout|cerr|clog)\\b|\\bSTD(OUT|ERR)_FILENO\\b");
    std::vector<std::string> found;
    for (const auto& [file, text] : tree) {
        if (file.starts_with("src/platform/os/")) {
            continue;
        }
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            const std::string code = line.substr(0, line.find("//"));
            if (std::regex_search(code, kPrint)) {
                found.push_back(file + ":" + std::to_string(number) + ": " + line);
            }
        }
    }
    return found;
}

TEST(Printing, IsFoundWithFileAndLine) {
    EXPECT_THAT(Prints({{"src/sync/A.cpp", "int a;\nstd::printf(\"x\");\n"}}),
                ElementsAre("src/sync/A.cpp:2: std::printf(\"x\");"));
    for (const char* line :
         {"printf(text);", "std::fprintf(file, text);", "puts(text);", "fputs(text, file);",
          "putchar('x');", "perror(text);", "fwrite(text, 1, size, stdout);", "fflush(stderr);",
          "std::cout << text;", "std::cerr << text;", "std::clog << text;",
          "dup2(file, STDOUT_FILENO);", "isatty(STDERR_FILENO);"}) {
        EXPECT_THAT(Prints({{"programs/hub/A.cpp", line}}), SizeIs(1)) << line;
    }
    for (const char* line : {"std::snprintf(text, size, format);", "os::Print(text);",
                             "// std::puts(text);", "output(text);"}) {
        EXPECT_THAT(Prints({{"src/sync/A.cpp", line}}), IsEmpty()) << line;
    }
    EXPECT_THAT(Prints({{"src/platform/os/Print.cpp", "std::vprintf(format, values);"}}),
                IsEmpty());
}

TEST(Printing, GoesThroughThePlatform) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs"});
    ASSERT_TRUE(tree.contains("src/platform/os/Print.cpp"));
    EXPECT_THAT(Prints(tree), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
