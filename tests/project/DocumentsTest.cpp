#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = KORVEX_SOURCE_DIR;

/// Every page of the project: its path and text.
SourceTree Documents() {
    SourceTree pages;
    for (const char* folder : {"", "docs"}) {
        for (const auto& entry : fs::directory_iterator(kRoot / folder)) {
            if (entry.path().extension() == ".md") {
                const std::string path = fs::relative(entry.path(), kRoot).generic_string();
                pages.emplace(path, ReadProjectFile(path));
            }
        }
    }
    return pages;
}

/// The names by which a page's headings are linked to.
std::set<std::string> Anchors(const std::string& page) {
    std::istringstream lines(page);
    std::set<std::string> anchors;
    for (std::string line; std::getline(lines, line);) {
        const auto start = line.find_first_not_of('#');
        if (start == 0 || start == std::string::npos || line[start] != ' ') {
            continue;
        }
        std::string anchor;
        for (const char letter : line.substr(start + 1)) {
            const auto code = static_cast<unsigned char>(letter);
            if (letter == ' ') {
                anchor += '-';
            } else if (std::isalnum(code) != 0 || letter == '-' || letter == '_') {
                anchor += static_cast<char>(std::tolower(code));
            }
        }
        anchors.insert(anchor);
    }
    return anchors;
}

/// Calls `check` with the page and the match of each place that fits; the number of them.
template <class Check>
int ForEachPlace(const std::regex& place, Check check) {
    int places = 0;
    for (const auto& [page, text] : Documents()) {
        for (std::sregex_iterator match(text.begin(), text.end(), place), end; match != end;
             ++match, ++places) {
            check(page, *match);
        }
    }
    return places;
}

TEST(Documents, AreAllThere) {
    for (const char* page : {"README.md", "CONTRIBUTING.md", "CHANGELOG.md", "docs/guide.md"}) {
        EXPECT_TRUE(Documents().contains(page)) << page;
    }
}

TEST(Documents, LinksLeadSomewhere) {
    const int links = ForEachPlace(
        std::regex("\\]\\(([^)#]*)#?([^)]*)\\)"),
        [](const std::string& page, const std::smatch& match) {
            const std::string file = match[1];
            const std::string anchor = match[2];
            if (file.starts_with("http")) {
                return;
            }
            const fs::path target =
                file.empty() ? fs::path(page) : fs::path(page).parent_path() / file;
            ASSERT_TRUE(fs::exists(kRoot / target)) << page << ": " << match[0];
            if (!anchor.empty()) {
                EXPECT_TRUE(Anchors(ReadProjectFile(target.generic_string())).contains(anchor))
                    << page << ": " << match[0];
            }
        });
    EXPECT_GT(links, 40) << "the links were not found";
}

TEST(Documents, NameFilesAndFoldersThatExist) {
    const int paths = ForEachPlace(
        std::regex(
            "`((?:src|include|tests|programs|examples|scripts|docs|cmake|packaging|bench|fuzz)/"
            "[A-Za-z0-9_./-]*)`"),
        [](const std::string& page, const std::smatch& match) {
            EXPECT_TRUE(fs::exists(kRoot / match[1].str())) << page << ": " << match[0];
        });
    EXPECT_GT(paths, 60) << "the paths were not found";
}

TEST(Documents, ShowScriptsThatCanBeRun) {
    const int scripts = ForEachPlace(
        std::regex("[ `]\\./((?:scripts|\\.ci)/[a-z_-]+)"),
        [](const std::string& page, const std::smatch& match) {
            const fs::path script = kRoot / match[1].str();
            ASSERT_TRUE(fs::is_regular_file(script)) << page << ": " << match[0];
            EXPECT_NE(fs::status(script).permissions() & fs::perms::owner_exec, fs::perms::none)
                << page << ": " << match[0];
        });
    EXPECT_GT(scripts, 5) << "the scripts were not found";
}

TEST(Documents, ShowPresetsThatExist) {
    const std::string presets = ReadProjectFile("CMakePresets.json");
    const int shown = ForEachPlace(
        std::regex("--preset ([a-z-]+)"), [&](const std::string& page, const std::smatch& match) {
            EXPECT_NE(presets.find("\"name\": \"" + match[1].str() + "\""), std::string::npos)
                << page << ": " << match[0];
        });
    EXPECT_GT(shown, 4) << "the presets were not found";
}

/// The first group of the first match of the pattern in the file.
std::string Found(const std::string& path, const std::string& pattern) {
    const std::string text = ReadProjectFile(path);
    std::smatch match;
    const bool found = std::regex_search(text, match, std::regex(pattern));
    EXPECT_TRUE(found) << path << ": " << pattern;
    return found ? match[1].str() : "";
}

TEST(Documents, TellTheVersion) {
    const std::string version = Found("CMakeLists.txt", "project\\(Korvex3Sync VERSION ([0-9.]+)");
    EXPECT_EQ(Found("CHANGELOG.md", "\n## ([0-9.]+)\n"), version) << "the newest release";
    // A consumer asks for the version whose interface it knows.
    const std::string interface = version.substr(0, version.rfind('.'));
    for (const char* page : {"README.md", "examples/CMakeLists.txt"}) {
        EXPECT_EQ(Found(page, "find_package\\(Korvex3Sync ([0-9.]+)"), interface) << page;
    }
}

TEST(Documents, TellTheOldestCMake) {
    const std::string oldest =
        Found("CMakeLists.txt", "cmake_minimum_required\\(VERSION ([0-9.]+)\\)");
    EXPECT_EQ(Found("examples/CMakeLists.txt", "cmake_minimum_required\\(VERSION ([0-9.]+)\\)"),
              oldest);
    EXPECT_EQ(Found("docs/dependencies.md", "CMake ([0-9.]+[0-9])"), oldest);
}

}  // namespace

}  // namespace Korvex3Sync::tests
