#include "project/IncludeRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "support/CaseName.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A tree in which every room has a header, and one more file.
SourceTree TreeWith(const std::string& file, const std::string& text) {
    SourceTree tree;
    for (const char* header : {"include/Korvex3Sync/Status.h",
                               "src/interface/Frame.h",
                               "src/sync/Manager.h",
                               "src/camera/Grab.h",
                               "src/platform/include/zr3DHandiDLPdev.h",
                               "src/platform/include/zr3DCamera.h",
                               "src/platform/include/USBTREE.h",
                               "src/platform/os/Event.h",
                               "src/platform/board/Link.h",
                               "src/platform/board/protocol/Report.h",
                               "src/platform/cameras/Camera.h",
                               "src/platform/usbtree/Tree.h",
                               "src/virtual_head/Request.h",
                               "src/virtual_head/VirtualHead.h",
                               "programs/korvexctl/Program.h",
                               "programs/korvexctl/cli/ExitCodes.h",
                               "programs/korvexctl/files/Output.h",
                               "programs/korvexctl/head/Session.h",
                               "programs/korvexctl/settings/Settings.h",
                               "programs/korvexctl/pictures/Picture.h",
                               "programs/korvexctl/scan/Scan.h",
                               "programs/korvexctl/health/Doctor.h",
                               "programs/korvexctl/commands/Commands.h",
                               "tests/support/Child.h"}) {
        tree[header] = "#pragma once\n";
    }
    tree[file] = text;
    return tree;
}

SourceTree Including(const std::string& file, const std::string& header) {
    return TreeWith(file, "#include <vector>\n#include \"" + header + "\"\n");
}

struct Case {
    const char* file;
    const char* header;

    friend void PrintTo(const Case& c, std::ostream* out) {
        *out << c.file << " includes " << c.header;
    }
};

std::string NameOf(const testing::TestParamInfo<Case>& row) {
    return support::CaseName(std::string(row.param.file) + " includes " + row.param.header);
}

class ForbiddenInclude : public ::testing::TestWithParam<Case> {};
class AllowedInclude : public ::testing::TestWithParam<Case> {};

TEST_P(ForbiddenInclude, IsFoundWithFileAndLine) {
    const auto& [file, header] = GetParam();
    EXPECT_THAT(ForbiddenIncludes(Including(file, header)),
                ElementsAre(std::string(file) + ":2: must not include " + header));
}

TEST_P(AllowedInclude, IsNotFound) {
    const auto& [file, header] = GetParam();
    EXPECT_THAT(ForbiddenIncludes(Including(file, header)), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rooms, ForbiddenInclude,
    ::testing::Values(Case{"include/Korvex3Sync/A.h", "sync/Manager.h"},
                      Case{"include/Korvex3Sync/A.h", "glog/logging.h"},
                      Case{"src/interface/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"src/interface/A.cpp", "platform/include/zr3DCamera.h"},
                      Case{"src/interface/A.cpp", "platform/board/Link.h"},
                      Case{"src/sync/A.cpp", "interface/Frame.h"},
                      Case{"src/sync/A.cpp", "virtual_head/Request.h"},
                      Case{"src/sync/A.cpp", "platform/include/zr3DCamera.h"},
                      Case{"src/camera/A.cpp", "sync/Manager.h"},
                      Case{"src/camera/A.cpp", "platform/include/zr3DHandiDLPdev.h"},
                      Case{"src/camera/A.cpp", "platform/include/USBTREE.h"},
                      Case{"src/camera/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"src/platform/board/A.cpp", "platform/cameras/Camera.h"},
                      Case{"src/platform/board/A.cpp", "Korvex3Sync/Status.h"},
                      Case{"src/platform/board/protocol/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"src/platform/board/protocol/A.cpp", "platform/board/Link.h"},
                      Case{"src/platform/cameras/A.cpp", "sync/Manager.h"},
                      Case{"src/platform/cameras/A.cpp", "../board/Link.h"},
                      Case{"src/platform/usbtree/A.cpp", "camera/Grab.h"},
                      Case{"src/platform/usbtree/A.cpp", "platform/board/Link.h"},
                      Case{"src/platform/os/A.cpp", "platform/include/USBTREE.h"},
                      Case{"src/platform/include/A.h", "platform/os/Event.h"},
                      Case{"src/virtual_head/A.cpp", "platform/board/Link.h"},
                      Case{"src/virtual_head/A.cpp", "Korvex3Sync/Status.h"},
                      Case{"programs/korvexctl/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"programs/korvexctl/A.cpp", "platform/include/USBTREE.h"},
                      Case{"programs/korvexctl/A.cpp", "sync/Manager.h"},
                      Case{"programs/korvexctl/A.cpp", "support/Child.h"},
                      Case{"programs/korvexctl/cli/A.cpp", "korvexctl/files/Output.h"},
                      Case{"programs/korvexctl/files/A.cpp", "korvexctl/head/Session.h"},
                      Case{"programs/korvexctl/head/A.cpp", "korvexctl/settings/Settings.h"},
                      Case{"programs/korvexctl/head/A.cpp", "../scan/Scan.h"},
                      Case{"programs/korvexctl/settings/A.cpp", "korvexctl/scan/Scan.h"},
                      Case{"programs/korvexctl/pictures/A.cpp", "korvexctl/scan/Scan.h"},
                      Case{"programs/korvexctl/scan/A.cpp", "korvexctl/health/Doctor.h"},
                      Case{"programs/korvexctl/scan/A.cpp", "virtual_head/Request.h"},
                      Case{"programs/korvexctl/health/A.cpp", "korvexctl/commands/Commands.h"},
                      Case{"programs/korvexctl/health/A.cpp", "platform/board/protocol/Report.h"},
                      Case{"programs/korvexctl/commands/A.cpp", "korvexctl/Program.h"},
                      Case{"examples/a.cpp", "virtual_head/Request.h"},
                      Case{"src/unknown_room/A.cpp", "sync/Manager.h"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Rooms, AllowedInclude,
    ::testing::Values(Case{"include/Korvex3Sync/A.h", "Korvex3Sync/Status.h"},
                      Case{"src/interface/A.cpp", "sync/Manager.h"},
                      Case{"src/interface/A.cpp", "platform/include/zr3DHandiDLPdev.h"},
                      Case{"src/interface/A.cpp", "Frame.h"},
                      Case{"src/sync/A.cpp", "camera/Grab.h"},
                      Case{"src/sync/A.cpp", "Korvex3Sync/Status.h"},
                      Case{"src/sync/A.cpp", "platform/include/USBTREE.h"},
                      Case{"src/camera/A.cpp", "glog/logging.h"},
                      Case{"src/platform/board/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"src/platform/board/A.cpp", "platform/board/protocol/Report.h"},
                      Case{"src/platform/cameras/A.cpp", "platform/os/Event.h"},
                      Case{"src/virtual_head/A.cpp", "platform/board/protocol/Report.h"},
                      Case{"programs/korvexctl/A.cpp", "virtual_head/Request.h"},
                      Case{"programs/korvexctl/A.cpp", "platform/os/Event.h"},
                      Case{"programs/korvexctl/A.cpp", "korvexctl/commands/Commands.h"},
                      Case{"programs/korvexctl/files/A.cpp", "korvexctl/cli/ExitCodes.h"},
                      Case{"programs/korvexctl/settings/A.cpp", "korvexctl/head/Session.h"},
                      Case{"programs/korvexctl/scan/A.cpp", "korvexctl/pictures/Picture.h"},
                      Case{"programs/korvexctl/health/A.cpp", "korvexctl/scan/Scan.h"},
                      Case{"programs/korvexctl/commands/A.cpp", "korvexctl/health/Doctor.h"},
                      Case{"examples/a.cpp", "Korvex3Sync/Status.h"},
                      Case{"tests/a/A.cpp", "virtual_head/VirtualHead.h"},
                      Case{"tests/a/A.cpp", "support/Child.h"}),
    NameOf);

TEST(IncludeRules, AngleBracketsAndSpacesHideNothing) {
    EXPECT_THAT(ForbiddenIncludes(TreeWith("src/sync/A.cpp",
                                           "#include <virtual_head/Request.h>\n"
                                           "  #  include\t\"interface/Frame.h\"")),
                SizeIs(2));
}

TEST(IncludeRules, ADriverHidesItsLibrary) {
    const std::string text = "#include <hidapi/hidapi.h>\n";
    EXPECT_THAT(ForbiddenIncludes(TreeWith("src/platform/board/Device.cpp", text)), IsEmpty());
    for (const char* file : {"src/platform/os/Device.cpp", "src/interface/Frame.cpp",
                             "programs/korvexctl/Program.cpp", "tests/board/Test.cpp"}) {
        EXPECT_THAT(ForbiddenIncludes(TreeWith(file, text)), SizeIs(1)) << file;
    }
}

TEST(IncludeRules, AnIncludeInACommentIsNone) {
    EXPECT_THAT(
        ForbiddenIncludes(TreeWith("src/sync/A.cpp", "// #include \"virtual_head/Request.h\"\n")),
        IsEmpty());
}

TEST(IncludeRules, APublicHeaderNeedsTheStandardLibraryOnly) {
    EXPECT_THAT(ForbiddenIncludes(TreeWith("include/Korvex3Sync/A.h", "#include <vector>\n")),
                IsEmpty());
    EXPECT_THAT(
        ForbiddenIncludes(TreeWith("include/Korvex3Sync/A.h", "#include <glog/logging.h>\n")),
        SizeIs(1));
}

TEST(IncludeRules, HoldInTheWholeProject) {
    const SourceTree tree =
        ReadSourceTree({"include", "src", "programs", "tests", "examples", "bench"});
    ASSERT_TRUE(tree.contains("src/virtual_head/Request.h"));
    ASSERT_TRUE(tree.contains("programs/korvexctl/main.cpp"));
    EXPECT_THAT(ForbiddenIncludes(tree), IsEmpty());
}

TEST(FolderCycles, AreFoundWithEachIncludeThatClosesThem) {
    EXPECT_THAT(FolderCycles({{"src/a/x/X.h", "#include \"a/y/Y.h\"\n"},
                              {"src/a/y/Y.h", ""},
                              {"src/a/y/Other.cpp", "\n#include \"a/x/X.h\"\n"},
                              {"src/a/z/Z.cpp", "#include \"a/x/X.h\"\n"}}),
                ElementsAre("src/a/x/X.h:1: src/a/x and src/a/y need each other",
                            "src/a/y/Other.cpp:2: src/a/y and src/a/x need each other"));
}

TEST(FolderCycles, AreFoundThroughOtherFolders) {
    EXPECT_THAT(FolderCycles({{"src/a/A.h", "#include \"b/B.h\"\n"},
                              {"src/b/B.h", "#include \"c/C.h\"\n"},
                              {"src/c/C.h", "#include \"a/A.h\"\n"}}),
                SizeIs(3));
}

TEST(FolderCycles, AFolderAndTheOneItStandsInAreTwo) {
    const std::string above = "programs/tool/Main.h";
    const std::string below = "programs/tool/cli/Text.h";
    EXPECT_THAT(FolderCycles({{above, "#include \"tool/cli/Text.h\"\n"}, {below, ""}}), IsEmpty());
    EXPECT_THAT(FolderCycles({{above, "#include \"tool/cli/Text.h\"\n"},
                              {below, "#include \"tool/Main.h\"\n"}}),
                SizeIs(2));
}

TEST(FolderCycles, AFolderMayIncludeItself) {
    EXPECT_THAT(FolderCycles(
                    {{"src/a/A.h", "#include \"a/B.h\"\n"}, {"src/a/B.h", "#include \"a/A.h\"\n"}}),
                IsEmpty());
}

TEST(FolderCycles, AreNotInTheProject) {
    const SourceTree tree = ReadSourceTree({"include", "src", "programs"});
    ASSERT_TRUE(tree.contains("programs/korvexctl/main.cpp"));
    ASSERT_TRUE(tree.contains("src/virtual_head/scene/Scene.cpp"));
    EXPECT_THAT(FolderCycles(tree), IsEmpty());
}

/// The rooms or headers that a word of a page means.
std::set<std::string> Meant(const std::string& words) {
    static const std::map<std::string, std::set<std::string>> kMeant{
        {"public headers", {"include/Korvex3Sync/"}},
        {"the C++ standard library", {}},
        {"nothing else of ours", {}},
        {"all its folders", {}},
        {"everything", {"include/", "src/", "programs/", "tests/"}},
        {"platform headers", {"src/platform/include/"}},
        {"the board header", {"src/platform/include/zr3DHandiDLPdev.h"}},
        {"the board and USB-tree headers",
         {"src/platform/include/zr3DHandiDLPdev.h", "src/platform/include/USBTREE.h"}},
        {"the service headers",
         {"src/platform/include/SyncInterface.h", "src/platform/include/QtTunnel.h"}},
        {"the camera header", {"src/platform/include/zr3DCamera.h"}},
        {"platform/os", {"src/platform/os/"}},
        {"platform/text", {"src/platform/text/"}},
        {"platform/link", {"src/platform/link/"}},
        {"platform/tunnel", {"src/platform/tunnel/"}},
        {"src/platform/include/SyncInterface.h", {"src/platform/include/SyncInterface.h"}},
        {"src/platform/include/ImageSetNotice.h", {"src/platform/include/ImageSetNotice.h"}},
        {"ImageSetNotice.h", {"src/platform/include/ImageSetNotice.h"}},
        {"sync/frames/CallbackTimes.h", {"src/sync/frames/CallbackTimes.h"}},
        {"virtual_head", {"src/virtual_head/"}},
        {"virtual_head/Request.h", {"src/virtual_head/Request.h"}},
        {"board/protocol", {"src/platform/board/protocol/"}},
        {"facts of the hardware",
         {"src/platform/include/BoardFacts.h", "src/platform/include/PackedFrameLayout.h"}}};
    const auto found = kMeant.find(words);
    if (found != kMeant.end()) {
        return found->second;
    }
    return {(words.starts_with("korvexctl") ? "programs/" : "") + words + '/'};
}

/// What the words between commas stand for, all together.
std::set<std::string> AllMeant(std::string cell) {
    std::erase(cell, '`');
    std::set<std::string> meant;
    std::istringstream parts(cell);
    for (std::string part; std::getline(parts >> std::ws, part, ',');) {
        meant.merge(Meant(part.substr(0, part.find_last_not_of(' ') + 1)));
    }
    return meant;
}

TEST(IncludeRules, StandInTheDocumentAsTheyAreChecked) {
    std::map<std::string, std::set<std::string>> written;
    std::istringstream lines(ReadProjectFile("docs/architecture.md"));
    std::string line;
    while (std::getline(lines, line) && line != "| room | may include |") {
    }
    std::getline(lines, line);  // under the head
    while (std::getline(lines, line) && line.starts_with("| ")) {
        const auto border = line.find(" | ");
        ASSERT_NE(border, std::string::npos) << line;
        for (const std::string& room : AllMeant(line.substr(2, border - 2))) {
            written[room] = AllMeant(line.substr(border + 3, line.rfind('|') - border - 3));
        }
    }
    EXPECT_EQ(written, IncludeTable());
}

TEST(PlatformConditions, AreFoundOutsideTheirRooms) {
    EXPECT_THAT(PlatformConditions({{"src/sync/A.cpp", "int a;\n#if defined(_WIN32)\n#endif\n"}}),
                ElementsAre("src/sync/A.cpp:2: #if defined(_WIN32)"));
    EXPECT_THAT(PlatformConditions({{"programs/hub/A.cpp", "#ifdef __linux__\n#endif\n"},
                                    {"src/platform/board/A.cpp", "# ifndef __unix__\n"}}),
                SizeIs(2));
    EXPECT_THAT(PlatformConditions({{"src/platform/os/A.cpp", "#ifdef _WIN32\n"},
                                    {"include/Korvex3Sync/Export.h", "#if defined(_WIN32)\n"},
                                    {"src/sync/A.cpp", "#ifdef KORVEX_CHECKS\n"}}),
                IsEmpty());
}

TEST(PlatformConditions, StandInTheirRoomsOnly) {
    EXPECT_THAT(PlatformConditions(ReadSourceTree({"include", "src", "programs", "examples"})),
                IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
