#include "support/GoldenSections.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>

namespace Korvex3Sync::tests::support {
namespace {

std::string Named(const std::string& operation, const std::string& section) {
    return operation + " [" + section + "]";
}

std::vector<std::string> LinesOf(const std::filesystem::path& path) {
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

std::optional<std::string> GoldenSection(const std::string& line) {
    if (line.starts_with('[') && line.ends_with(']')) {
        return line.substr(1, line.size() - 2);
    }
    return std::nullopt;
}

void NoteGoldenUsed(const std::string& operation, const std::string& section) {
    if (const char* const file = std::getenv(kGoldenUsedVariable)) {
        std::ofstream(file, std::ios::app) << Named(operation, section) + "\n";
    }
}

std::vector<std::string> UnusedGolden(const std::filesystem::path& folder,
                                      const std::filesystem::path& used) {
    const std::vector<std::string> notes = LinesOf(used);
    std::set<std::string> unseen(notes.begin(), notes.end());
    std::vector<std::string> unused;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string operation = entry.path().stem().string();
        bool empty = true;
        for (const std::string& line : LinesOf(entry.path())) {
            if (const auto section = GoldenSection(line)) {
                empty = false;
                if (unseen.erase(Named(operation, *section)) == 0) {
                    unused.push_back(Named(operation, *section));
                }
            }
        }
        if (empty) {
            unused.push_back(operation);
        }
    }
    std::sort(unused.begin(), unused.end());
    return unused;
}

}  // namespace Korvex3Sync::tests::support
