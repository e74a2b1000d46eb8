#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "project/SourceTree.h"
#include "support/ChildProcess.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Every line of the files that `covers` that contains the pattern, as "FILE:LINE: the line".
/// Comments do not count.
template <typename Covers>
std::vector<std::string> LinesWith(const std::regex& pattern, const SourceTree& tree,
                                   const Covers& covers) {
    std::vector<std::string> found;
    for (const auto& [file, text] : tree) {
        if (!covers(file)) {
            continue;
        }
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            if (std::regex_search(line.substr(0, line.find("//")), pattern)) {
                found.push_back(file + ":" + std::to_string(number) + ": " + line);
            }
        }
    }
    return found;
}

/// Words of one compiler that its warnings let pass. The headers that mark exports, and what
/// depends on the system, may use them.
std::vector<std::string> Extensions(const SourceTree& tree) {
    static const std::regex kExtension(
        "__attribute|__declspec|\\[\\[ *(gnu|clang|msvc)::|__builtin_|__extension__|__typeof|"
        "\\btypeof *\\(|\\basm\\b|__asm|__int128|__thread\\b|#include_next|__restrict|"
        "# *pragma +(GCC|clang)|__PRETTY_FUNCTION__|\\balloca\\b|\\bssize_t\\b|"
        "\\bu(int|_int(8|16|32|64)_t)\\b");
    return LinesWith(kExtension, tree, [](const std::string& file) {
        return !file.starts_with("src/platform/os/") && !file.ends_with("Export.h");
    });
}

/// `long` has 32 bits on one system and 64 on the other, so no type that applications or other
/// processes see has one.
std::vector<std::string> LongMembers(SourceTree tree) {
    static const std::regex kLongLong("\\blong long\\b");
    static constexpr std::array<std::string_view, 6> kShared{"include/",
                                                             "src/platform/board/protocol/",
                                                             "src/platform/link/wire/",
                                                             "src/platform/link/Operations.h",
                                                             "src/platform/link/HubOperations.h",
                                                             "src/platform/tunnel/Area"};
    for (auto& [file, text] : tree) {
        text = std::regex_replace(text, kLongLong, "long_long");
    }
    return LinesWith(std::regex("\\blong\\b"), tree, [](const std::string& file) {
        return std::any_of(kShared.begin(), kShared.end(),
                           [&](std::string_view place) { return file.starts_with(place); });
    });
}

/// Waits without a limit that lose a wake-up where the C++ library of g++ 12 has no system call for
/// them.
std::vector<std::string> LosingWaits(const SourceTree& tree) {
    static const std::regex kWait("std::(latch|barrier)\\b|\\.acquire\\(\\)");
    return LinesWith(kWait, tree, [](const std::string& file) {
        return file != "tests/project/PortableSourcesTest.cpp";
    });
}

/// Paths turned into text other than by os::TextOf, which on some systems is not UTF-8.
std::vector<std::string> PathsAsText(const SourceTree& tree) {
    static const std::regex kText("[.>](generic_)?string\\(\\)");
    return LinesWith(kText, tree, [](const std::string& file) {
        return !file.starts_with("src/platform/os/posix/");
    });
}

TEST(PortableSources, ExtensionsAreFoundWithFileAndLine) {
    EXPECT_THAT(Extensions({{"src/sync/A.cpp", "int a;\nint b __attribute__((unused));\n"}}),
                ElementsAre("src/sync/A.cpp:2: int b __attribute__((unused));"));
    for (const char* line :
         {"[[gnu::noinline]] void F();", "if (__builtin_expect(a, 1)) {", "__extension__ int a;",
          "__typeof__(a) b = a;", "typeof(a) b = a;", "asm(\"nop\");", "unsigned __int128 a;",
          "static __thread int a;", "#include_next <map>", "char* __restrict a;",
          "#pragma GCC diagnostic push", "Log(__PRETTY_FUNCTION__);", "alloca(size);",
          "ssize_t size = 0;", "__declspec(noinline) void F();", "u_int8_t a;", "uint a;"}) {
        EXPECT_THAT(Extensions({{"programs/hub/A.cpp", line}}), SizeIs(1)) << line;
    }
    for (const char* line :
         {"[[nodiscard]] int F();", "// __builtin_expect", "std::uint8_t a;", "thread_local int a;",
          "#pragma once", "Log(__func__);", "F({1, 2});", "int assembled = 0;"}) {
        EXPECT_THAT(Extensions({{"src/sync/A.cpp", line}}), IsEmpty()) << line;
    }
    EXPECT_THAT(Extensions({{"src/platform/os/A.cpp", "__builtin_trap();"},
                            {"include/Korvex3Sync/Export.h", "__attribute__((visibility()))"}}),
                IsEmpty());
}

TEST(PortableSources, LongIsFoundWhereOthersSeeIt) {
    for (const char* file :
         {"include/Korvex3Sync/Types.h", "src/platform/link/wire/Values.h",
          "src/platform/tunnel/AreaLayout.h", "src/platform/link/Operations.h"}) {
        for (const char* line : {"long a;", "    unsigned long b;", "void F(long a, int b);",
                                 "std::vector<long> c;", "const long& d"}) {
            EXPECT_THAT(LongMembers({{file, line}}), SizeIs(1)) << file << ": " << line;
        }
        for (const char* line : {"long long a;", "unsigned long long b;", "int longest;",
                                 "// a long text", "std::int64_t c;"}) {
            EXPECT_THAT(LongMembers({{file, line}}), IsEmpty()) << file << ": " << line;
        }
    }
    EXPECT_THAT(LongMembers({{"src/platform/cameras/Camera.h", "long a;"}}), IsEmpty());
}

TEST(PortableSources, HaveNoExtensionsOfOneCompiler) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs"});
    ASSERT_TRUE(tree.contains("src/interface/CallFrame.cpp"));
    EXPECT_THAT(Extensions(tree), IsEmpty());
    EXPECT_THAT(LongMembers(tree), IsEmpty());
}

TEST(PortableSources, WaitsThatLoseAWakeUpAreFound) {
    for (const char* line :
         {"std::latch begun(1);", "std::barrier<> both(2);", "free.acquire();"}) {
        EXPECT_THAT(LosingWaits({{"tests/os/A.cpp", line}}), SizeIs(1)) << line;
    }
    for (const char* line : {"m_changed.notify_all();", "arrived.try_acquire_for(limit)"}) {
        EXPECT_THAT(LosingWaits({{"tests/os/A.cpp", line}}), IsEmpty()) << line;
    }
}

TEST(PortableSources, HaveNoWaitsThatLoseAWakeUp) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs", "tests", "examples"});
    ASSERT_TRUE(tree.contains("tests/board/BoardLinkTest.cpp"));
    EXPECT_THAT(LosingWaits(tree), IsEmpty());
}

TEST(PortableSources, PathsAsTextAreFound) {
    for (const char* line : {"Refuse(file.string());", "    ->generic_string()"}) {
        EXPECT_THAT(PathsAsText({{"src/sync/A.cpp", line}}), SizeIs(1)) << line;
        EXPECT_THAT(PathsAsText({{"src/platform/os/posix/A.cpp", line}}), IsEmpty()) << line;
    }
    for (const char* line : {"node.as_string();", "std::string();", "os::TextOf(file)"}) {
        EXPECT_THAT(PathsAsText({{"src/sync/A.cpp", line}}), IsEmpty()) << line;
    }
}

TEST(PortableSources, MakeTextOfPathsInOneWay) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs"});
    ASSERT_TRUE(tree.contains("src/platform/os/windows/FileName.cpp"));
    EXPECT_THAT(PathsAsText(tree), IsEmpty());
}

TEST(PortableSources, AreCompiledWithoutOtherExtensions) {
    const std::string options = ReadProjectFile("cmake/KorvexOptions.cmake");
    EXPECT_THAT(options, HasSubstr("set(CMAKE_CXX_EXTENSIONS OFF)"));
    EXPECT_THAT(options, HasSubstr("-Wpedantic -Werror"));
    // What the words above do not find is an error of the compiler then.
    const TemporaryFolder folder;
    const std::string file = (folder.Path() / "a.cpp").string();
    const auto compiles = [&](const std::string& body) {
        WriteText(file, "int F(int a) {\n" + body + "\n}\n");
        return RunChild({"g++", "-std=c++20", "-Wpedantic", "-Werror", "-fsyntax-only", file})
                   .exitCode == 0;
    };
    EXPECT_TRUE(compiles("return a;"));
    for (const char* body :
         {"return ({ int b = a; b; });", "return a ?: 1;", "int b[a]; return b[0];",
          "switch (a) { case 1 ... 5: return 1; } return 0;", "int b[0]; return a + sizeof(b);",
          "void* l = &&end; goto *l; end: return a;",
          "struct { struct { int x; }; } s{{a}}; return s.x;"}) {
        EXPECT_FALSE(compiles(body)) << body;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
