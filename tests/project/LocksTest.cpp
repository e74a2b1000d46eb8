#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Locks and waits that the compiler's thread-safety analysis does not see.
constexpr std::array<std::string_view, 10> kUnseen{
    "std::mutex",           "std::recursive_mutex", "std::shared_mutex",
    "std::timed_mutex",     "std::lock_guard",      "std::unique_lock",
    "std::scoped_lock",     "std::shared_lock",     "std::condition_variable",
    "std::binary_semaphore"};

constexpr std::string_view kHome = "src/platform/os/";

/// Every line outside platform/os that names one of them, as "FILE:LINE: NAME".
std::vector<std::string> UnseenLocks(const SourceTree& tree) {
    std::vector<std::string> found;
    for (const auto& [file, text] : tree) {
        if (file.starts_with(kHome)) {
            continue;
        }
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            for (const std::string_view name : kUnseen) {
                if (line.find(name) != std::string::npos) {
                    found.push_back(file + ":" + std::to_string(number) + ": " + std::string(name));
                    break;
                }
            }
        }
    }
    return found;
}

TEST(Locks, OfTheStandardLibraryAreFound) {
    EXPECT_THAT(UnseenLocks({{"src/sync/A.h", "#include <mutex>\nstd::mutex m_mutex;\n"}}),
                ElementsAre("src/sync/A.h:2: std::mutex"));
    SourceTree tree;
    for (const std::string_view name : kUnseen) {
        tree["programs/" + std::string(name) + ".cpp"] = "    " + std::string(name) + " lock(m);";
    }
    EXPECT_THAT(UnseenLocks(tree), SizeIs(kUnseen.size()));
    EXPECT_THAT(UnseenLocks({{"programs/a.h", "std::condition_variable_any m_changed;\n"}}),
                SizeIs(1));
}

TEST(Locks, OfPlatformOsAreNot) {
    EXPECT_THAT(UnseenLocks({{"src/platform/os/Event.h", "std::mutex m_mutex;\n"},
                             {"src/sync/A.cpp", "os::MutexGuard lock(m_mutex);\n"}}),
                IsEmpty());
}

TEST(Locks, AreThoseOfPlatformOsInTheWholeProduct) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs"});
    ASSERT_TRUE(tree.contains("programs/korvexctl/main.cpp"));
    ASSERT_TRUE(tree.contains("src/platform/board/BoardLink.h"));
    EXPECT_THAT(UnseenLocks(tree), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
