#include "project/IncludeRules.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>

namespace Korvex3Sync::tests {

namespace {

using Strings = std::vector<std::string>;

/// A room may include its own files and the targets, each the beginning of a path. The first entry
/// whose beginning fits a file is the file's room.
struct Arrows {
    std::string room;
    Strings targets;
};

const std::string kPublic = "include/Korvex3Sync/";
const std::string kOs = "src/platform/os/";
const std::string kText = "src/platform/text/";
const std::string kHeaders = "src/platform/include/";
const std::string kBoardHeader = "src/platform/include/zr3DHandiDLPdev.h";
const std::string kBoardFacts = "src/platform/include/BoardFacts.h";
const std::string kFrameLayout = "src/platform/include/PackedFrameLayout.h";
const std::string kSetNotice = kHeaders + "ImageSetNotice.h";
const std::string kLink = "src/platform/link/";
const std::string kService = "src/service/";
const std::string kToml = "src/toml/";
const std::string kHead = "src/virtual_head/";
const std::string kHeadRequest = "src/virtual_head/Request.h";
const std::string kBackground = "programs/background/";
const std::string kKorvexctl = "programs/korvexctl/";
const std::string kCli = kKorvexctl + "cli/";
const std::string kFiles = kKorvexctl + "files/";
const std::string kProgramHead = kKorvexctl + "head/";
const std::string kSettings = kKorvexctl + "settings/";
const std::string kPictures = kKorvexctl + "pictures/";
const std::string kScan = kKorvexctl + "scan/";
const std::string kServiceCommands = kKorvexctl + "service/";

const std::vector<Arrows> kArrows{
    {kPublic, {}},
    {"src/interface/", {kPublic, "src/sync/", "src/camera/", kService, kBoardHeader, kOs}},
    {"src/sync/",
     {kPublic, "src/camera/", kBoardHeader, "src/platform/include/USBTREE.h", kBoardFacts,
      kFrameLayout, kOs}},
    {"src/camera/", {kPublic, "src/platform/include/zr3DCamera.h", kBoardFacts, kFrameLayout, kOs}},
    {kService,
     {kPublic, kHeaders + "SyncInterface.h", kHeaders + "QtTunnel.h", kSetNotice,
      "src/sync/frames/CallbackTimes.h", kOs}},
    {kHeaders + "SyncInterface.h", {kPublic, kHeaders}},
    {kSetNotice, {kPublic, kHeaders}},
    {kHeaders, {}},
    {kOs, {}},
    {kText, {}},
    {kToml, {}},
    // Report format and command codes: shared by the board's two ends, so free of both.
    {"src/platform/board/protocol/", {kHeaders, kOs}},
    {"src/platform/board/", {kHeaders, kOs, kHead}},
    {"src/platform/cameras/", {kHeaders, kOs, kHead}},
    {"src/platform/usbtree/", {kHeaders, kOs, kHead}},
    {"src/platform/tunnel/", {kHeaders, kOs}},
    {"src/platform/link/", {kPublic, kHeaders, "src/platform/tunnel/", kOs}},
    {kHead, {"src/platform/board/protocol/", kHeaders, kToml, kOs, kText}},
    {kBackground, {kOs}},
    {"programs/hub/", {kBackground, kLink, kOs}},
    {kCli, {kOs, kText}},
    {kFiles, {kCli, kOs, kText}},
    {kProgramHead, {kCli, kFiles, kPublic, kHeadRequest, kBoardFacts, kFrameLayout, kOs, kText}},
    {kSettings, {kCli, kProgramHead, kPublic, kToml, kOs, kText}},
    {kPictures, {kCli, kFiles, kOs}},
    {kScan, {kCli, kFiles, kProgramHead, kSettings, kPictures, kPublic, kOs}},
    {kServiceCommands, {kCli, kFiles, kProgramHead, kScan, kPublic, kLink, kOs}},
    {kKorvexctl + "health/",
     {kCli, kFiles, kProgramHead, kSettings, kPictures, kScan, kPublic, kHeadRequest, kBoardFacts,
      kFrameLayout, kOs}},
    {kKorvexctl + "commands/",
     {kCli, kFiles, kProgramHead, kSettings, kPictures, kScan, kServiceCommands,
      kKorvexctl + "health/", kPublic, kHeadRequest, kOs, kText}},
    {kKorvexctl, {kPublic, kHeadRequest, kOs, kText}},
    {"programs/device_service/core/",
     {kPublic, kSetNotice, "src/platform/link/", "src/platform/tunnel/", kOs}},
    {"programs/device_service/", {kBackground, kPublic, kOs}},
    {"examples/", {kPublic}},
    {"tests/", {"include/", "src/", "programs/", "tests/"}},
    {"bench/", {"include/", "src/", "programs/", "tests/"}},
};

/// Where a library that is not ours may be included: drivers hide theirs.
const std::map<std::string, std::string> kForeign{{"hidapi/", "src/platform/board/"}};

/// Where the compiler looks for headers of the project.
const Strings kRoots{"src/", "include/", "programs/", "tests/", kHeaders};

/// Rooms whose files may depend on the system.
bool MayAskForPlatform(const std::string& file) {
    return file.starts_with(kOs) || file.ends_with("Export.h");
}

void ForEachLine(const std::string& text,
                 const std::function<void(int number, const std::string& line)>& call) {
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        call(number, line);
    }
}

/// What a preprocessor directive says: its word and the rest; empty for any other line.
struct Directive {
    std::string word;
    std::string rest;
};

Directive DirectiveOf(const std::string& line) {
    std::istringstream words(line);
    Directive directive;
    char mark = 0;
    if (words >> mark && mark == '#') {
        words >> std::ws;
        while (std::isalpha(words.peek()) != 0) {
            directive.word.push_back(static_cast<char>(words.get()));
        }
        words >> std::ws;
        std::getline(words, directive.rest);
    }
    return directive;
}

struct Include {
    std::string name;
    bool quoted = false;
};

std::optional<Include> IncludeOf(const std::string& line) {
    const auto [word, rest] = DirectiveOf(line);
    if (word != "include" || rest.empty() || (rest.front() != '"' && rest.front() != '<')) {
        return std::nullopt;
    }
    const bool quoted = rest.front() == '"';
    return Include{rest.substr(1, rest.find(quoted ? '"' : '>', 1) - 1), quoted};
}

bool AsksForPlatform(const std::string& line) {
    static const Strings kConditions{"if", "ifdef", "ifndef", "elif"};
    static const Strings kPlatforms{"_WIN32",   "_WIN64",  "__linux__", "__unix__",  "__APPLE__",
                                    "_MSC_VER", "__MINGW", "__GNUC__",  "__clang__", "Q_OS_"};
    const auto [word, rest] = DirectiveOf(line);
    return std::find(kConditions.begin(), kConditions.end(), word) != kConditions.end() &&
           std::any_of(kPlatforms.begin(), kPlatforms.end(), [&rest = rest](const std::string& p) {
               return rest.find(p) != std::string::npos;
           });
}

/// The file of the project that an include names, or nothing: then it is not ours.
std::optional<std::string> Resolve(const SourceTree& tree, const std::string& file,
                                   const Include& include) {
    Strings roots = kRoots;
    if (include.quoted) {
        roots.insert(roots.begin(), file.substr(0, file.rfind('/') + 1));
    }
    for (const std::string& root : roots) {
        const std::string path =
            std::filesystem::path(root + include.name).lexically_normal().string();
        if (tree.contains(path)) {
            return path;
        }
    }
    return std::nullopt;
}

/// Whether the header belongs to the C++ standard library: these have neither folder nor ending.
bool IsStandard(const std::string& name) {
    return name.find_first_of("/.") == std::string::npos;
}

bool MayInclude(const Arrows& arrows, const std::string& target) {
    return target.starts_with(arrows.room) ||
           std::any_of(arrows.targets.begin(), arrows.targets.end(),
                       [&target](const std::string& t) { return target.starts_with(t); });
}

bool Allowed(const SourceTree& tree, const std::string& file, const Include& include) {
    for (const auto& [library, room] : kForeign) {
        if (include.name.starts_with(library) && !file.starts_with(room)) {
            return false;
        }
    }
    const auto arrows = std::find_if(kArrows.begin(), kArrows.end(),
                                     [&file](const Arrows& a) { return file.starts_with(a.room); });
    const auto target = Resolve(tree, file, include);
    if (arrows == kArrows.end()) {
        return !target;
    }
    if (!target) {
        // What the public headers need has to be on every machine of a consumer.
        return arrows->room != kPublic || (!include.quoted && IsStandard(include.name));
    }
    return MayInclude(*arrows, *target);
}

std::string FolderOf(const std::string& file) {
    return file.substr(0, file.rfind('/'));
}

/// The folders that each folder includes from.
using FolderGraph = std::map<std::string, std::set<std::string>>;

bool Reaches(const FolderGraph& graph, const std::string& from, const std::string& to) {
    std::set<std::string> seen;
    Strings open{from};
    while (!open.empty()) {
        const std::string folder = open.back();
        open.pop_back();
        if (folder == to) {
            return true;
        }
        if (seen.insert(folder).second && graph.contains(folder)) {
            open.insert(open.end(), graph.at(folder).begin(), graph.at(folder).end());
        }
    }
    return false;
}

}  // namespace

std::map<std::string, std::set<std::string>> IncludeTable() {
    std::map<std::string, std::set<std::string>> table;
    for (const Arrows& arrows : kArrows) {
        table[arrows.room] = {arrows.targets.begin(), arrows.targets.end()};
    }
    return table;
}

std::vector<std::string> ForbiddenIncludes(const SourceTree& tree) {
    std::vector<std::string> found;
    for (const auto& [file, text] : tree) {
        ForEachLine(text, [&, &file = file](int number, const std::string& line) {
            const std::optional<Include> include = IncludeOf(line);
            if (include && !Allowed(tree, file, *include)) {
                found.push_back(file + ":" + std::to_string(number) + ": must not include " +
                                include->name);
            }
        });
    }
    return found;
}

std::vector<std::string> FolderCycles(const SourceTree& tree) {
    struct Step {
        std::string place;
        std::string from;
        std::string to;
    };
    std::vector<Step> steps;
    FolderGraph graph;
    for (const auto& [file, text] : tree) {
        ForEachLine(text, [&, &file = file](int number, const std::string& line) {
            const std::optional<Include> include = IncludeOf(line);
            const auto target = include ? Resolve(tree, file, *include) : std::nullopt;
            if (target && FolderOf(*target) != FolderOf(file)) {
                steps.push_back(
                    {file + ":" + std::to_string(number), FolderOf(file), FolderOf(*target)});
                graph[steps.back().from].insert(steps.back().to);
            }
        });
    }
    std::vector<std::string> found;
    for (const Step& step : steps) {
        if (Reaches(graph, step.to, step.from)) {
            found.push_back(step.place + ": " + step.from + " and " + step.to + " need each other");
        }
    }
    return found;
}

std::vector<std::string> PlatformConditions(const SourceTree& tree) {
    std::vector<std::string> found;
    for (const auto& [file, text] : tree) {
        if (MayAskForPlatform(file)) {
            continue;
        }
        ForEachLine(text, [&, &file = file](int number, const std::string& line) {
            if (AsksForPlatform(line)) {
                found.push_back(file + ":" + std::to_string(number) + ": " + line);
            }
        });
    }
    return found;
}

}  // namespace Korvex3Sync::tests
