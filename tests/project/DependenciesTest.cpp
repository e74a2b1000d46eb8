#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "project/SourceTree.h"
#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPage = "docs/dependencies.md";

/// The shared libraries that a file needs itself.
std::set<std::string> NeededBy(const fs::path& file) {
    const ChildResult readelf = RunChild({"readelf", "-d", file.string()});
    EXPECT_EQ(readelf.exitCode, 0) << readelf.error;
    const std::regex entry("\\(NEEDED\\).*\\[(.*)\\]");
    std::set<std::string> needed;
    std::istringstream lines(readelf.output);
    for (std::string line; std::getline(lines, line);) {
        if (std::smatch match; std::regex_search(line, match, entry)) {
            needed.insert(match[1]);
        }
    }
    return needed;
}

/// What the program and the libraries of this project need that comes from elsewhere.
std::set<std::string> NeededFromElsewhere() {
    const fs::path ours = fs::path(KORVEX_LIBRARY).parent_path();
    // In every Debian system.
    std::set<std::string> known{"libc.so.6", "libm.so.6", "libgcc_s.so.1"};
    std::set<std::string> elsewhere;
    std::vector<fs::path> open{KORVEX_KORVEXCTL};
    while (!open.empty()) {
        const fs::path file = open.back();
        open.pop_back();
        for (const std::string& name : NeededBy(file)) {
            if (!known.insert(name).second || name.starts_with("ld-linux")) {
                continue;
            }
            if (fs::exists(ours / name)) {
                open.push_back(ours / name);
            } else {
                elsewhere.insert(name);
            }
        }
    }
    EXPECT_TRUE(known.contains("libzr3DCamera.so"))
        << "the libraries of the project were not found";
    return elsewhere;
}

/// The rows of the table of shared libraries: library and package.
std::map<std::string, std::string> WrittenPackages() {
    const std::string page = ReadProjectFile(kPage);
    const std::regex row("\n\\| `(lib[^`]*\\.so\\.[0-9]+)` \\| `([^`]*)` \\|");
    std::map<std::string, std::string> packages;
    for (std::sregex_iterator match(page.begin(), page.end(), row), end; match != end; ++match) {
        packages[(*match)[1]] = (*match)[2];
    }
    return packages;
}

std::set<std::string> Words(const std::string& text) {
    std::istringstream stream(text);
    std::set<std::string> words;
    for (std::string word; stream >> word;) {
        if (word != "\\") {
            words.insert(word);
        }
    }
    return words;
}

/// What a page shows behind "apt-get install", over several lines.
std::set<std::string> InstallLine(const std::string& path) {
    const std::string page = ReadProjectFile(path);
    const std::string command = "\n    apt-get install ";
    const auto begin = page.find(command);
    EXPECT_NE(begin, std::string::npos) << path;
    return Words(
        page.substr(begin + command.size(), page.find("\n\n", begin) - begin - command.size()));
}

TEST(Dependencies, AtRunTimeAreThoseThatTheFilesName) {
    std::set<std::string> written;
    std::set<std::string> packages;
    for (const auto& [library, package] : WrittenPackages()) {
        written.insert(library);
        packages.insert(package);
    }
    EXPECT_EQ(written, NeededFromElsewhere());
    EXPECT_EQ(InstallLine(kPage), packages);
}

TEST(Dependencies, AtRunTimeComeFromThePackagesNamed) {
    for (const auto& [library, package] : WrittenPackages()) {
        const ChildResult owner = RunChild({"dpkg-query", "-S", "*/" + library});
        EXPECT_EQ(owner.exitCode, 0) << owner.error;
        const std::string line = '\n' + owner.output;
        EXPECT_TRUE(line.find('\n' + package + ':') != std::string::npos) << owner.output;
    }
}

TEST(Dependencies, ToBuildAreThoseThatTheScriptsInstall) {
    const std::string list = ReadProjectFile("scripts/lib/packages");
    const std::string begin = "build_packages=(";
    const auto at = list.find(begin) + begin.size();
    std::set<std::string> installed = Words(list.substr(at, list.find(')', at) - at));
    // Speeds a second build up, and is not needed.
    EXPECT_EQ(installed.erase("ccache"), 1U);
    EXPECT_EQ(InstallLine("README.md"), installed);
}

TEST(Dependencies, AGeneratorIsNamedWhereverAConsumerIsConfigured) {
    int shown = 0;
    for (const char* path :
         {"README.md", "docs/guide.md", "docs/examples.md", "examples/CMakeLists.txt"}) {
        std::istringstream lines(ReadProjectFile(path));
        for (std::string line; std::getline(lines, line);) {
            if (line.find("-DCMAKE_PREFIX_PATH=") != std::string::npos) {
                ++shown;
                EXPECT_NE(line.find("cmake -G Ninja "), std::string::npos) << path << ": " << line;
            }
        }
    }
    EXPECT_EQ(shown, 4);
}

}  // namespace

}  // namespace Korvex3Sync::tests
