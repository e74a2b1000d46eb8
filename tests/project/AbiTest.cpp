#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "project/SourceTree.h"
#include "support/ChildProcess.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

/// The header of a small library; a test changes one word of it.
const std::string kApi =
    "#include <string>\n"
    "namespace Api {\n"
    "enum Mode { ModeOne = 1, ModeTwo = 2 };\n"
    "struct Figures { int sets; int losses; };\n"
    "int Open(const std::string& name, Mode mode);\n"
    "int Read(Figures& figures);\n"
    "void Close();\n"
    "}\n";

const std::string kSource =
    "#include \"include/Korvex3Sync/Api.h\"\n"
    "int Api::Open(const std::string& name, Mode mode) { return mode + int(name.size()); }\n"
    "int Api::Read(Figures& figures) { return figures.sets; }\n"
    "void Api::Close() {}\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

/// Builds the library, and runs a command of scripts/lib/abi on it.
class Abi : public ::testing::Test {
protected:
    ChildResult Run(const std::string& command, const std::string& api, const std::string& source,
                    const std::string& version = "0", const std::string& debug = "-g") {
        const fs::path root = m_folder.Path();
        fs::create_directories(root / "include/Korvex3Sync");
        WriteText(root / "include/Korvex3Sync/Api.h", api);
        WriteText(root / "api.cpp", source);
        const ChildResult built =
            RunChild({"bash", "-c",
                      "cd '" + root.string() + "' && g++ -shared -fPIC " + debug +
                          " -Wl,-soname,libapi.so." + version + " -o libapi.so api.cpp"});
        EXPECT_EQ(built.exitCode, 0) << built.error;
        const std::string place = "'" + root.string() + "/";
        return RunChild({"bash", "-c",
                         "cd '" KORVEX_SOURCE_DIR "' && . scripts/lib/abi && " + command + ' ' +
                             place + "stored.abi' " + place + "libapi.so' " + place + "include'"});
    }

    void SetUp() override {
        const ChildResult stored = Run("update_abi", kApi, kSource);
        ASSERT_EQ(stored.exitCode, 0) << stored.error;
        const ChildResult same = Run("check_abi", kApi, kSource);
        ASSERT_EQ(same.exitCode, 0) << same.output << same.error;
    }

    void ExpectRefused(const std::string& api, const std::string& source) {
        const ChildResult check = Run("check_abi", api, source);
        EXPECT_NE(check.exitCode, 0) << check.output;
        EXPECT_THAT(check.error, HasSubstr("new major version"));
        EXPECT_NE(Run("update_abi", api, source).exitCode, 0);
        EXPECT_EQ(Run("update_abi", api, source, "1").exitCode, 0);
        EXPECT_EQ(Run("check_abi", api, source, "1").exitCode, 0);
    }

    TemporaryFolder m_folder;
};

TEST_F(Abi, ARemovedFunctionNeedsANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "void Close();\n", ""),
                  Replaced(kSource, "void Api::Close() {}\n", ""));
}

TEST_F(Abi, AChangedParameterNeedsANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "Mode mode", "int mode"),
                  Replaced(kSource, "Mode mode", "int mode"));
}

TEST_F(Abi, AChangedResultNeedsANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "int Read", "double Read"),
                  Replaced(kSource, "int Api::Read", "double Api::Read"));
}

TEST_F(Abi, ALargerStructNeedsANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "int losses;", "int losses; int gaps;"), kSource);
}

TEST_F(Abi, ExchangedMembersNeedANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "int sets; int losses;", "int losses; int sets;"), kSource);
}

TEST_F(Abi, AnotherValueOfAnEnumeratorNeedsANewMajorVersion) {
    ExpectRefused(Replaced(kApi, "ModeTwo = 2", "ModeTwo = 3"), kSource);
}

TEST_F(Abi, AnAddedFunctionIsCompatible) {
    const std::string api = Replaced(kApi, "void Close();", "void Close(); void Stop();");
    const std::string source = kSource + "void Api::Stop() {}\n";
    const ChildResult check = Run("check_abi", api, source);
    EXPECT_EQ(check.exitCode, 0) << check.output << check.error;
    EXPECT_THAT(check.output, HasSubstr("run scripts/abi update"));
    EXPECT_EQ(Run("update_abi", api, source).exitCode, 0);
    // From then on it has to stay.
    EXPECT_NE(Run("check_abi", kApi, kSource).exitCode, 0);
}

TEST_F(Abi, ANewMajorVersionHasToBeDescribed) {
    const ChildResult check = Run("check_abi", kApi, kSource, "1");
    EXPECT_NE(check.exitCode, 0);
    EXPECT_THAT(check.error, HasSubstr("libapi.so.1 is not described yet"));
}

TEST_F(Abi, ALibraryWithoutDebugInformationIsRefused) {
    const ChildResult check = Run("check_abi", kApi, kSource, "0", "-g0");
    EXPECT_NE(check.exitCode, 0);
    EXPECT_THAT(check.error, HasSubstr("no debug information"));
}

TEST_F(Abi, ADamagedDescriptionIsRefused) {
    const fs::path stored = m_folder.Path() / "stored.abi";
    fs::resize_file(stored, fs::file_size(stored) / 2);
    const ChildResult check = Run("check_abi", kApi, kSource);
    EXPECT_NE(check.exitCode, 0) << check.output;
    EXPECT_THAT(check.error, HasSubstr("is damaged"));
}

TEST(AbiOfTheLibrary, IsDescribedWithItsPublicTypes) {
    const std::string text = ReadProjectFile("packaging/abi/Korvex3Sync.abi");
    for (const char* part : {"soname='libKorvex3Sync.so.", "name='ScanStatistics' size-in-bits",
                             "mangled-name='_ZN11Korvex3Sync13ConnectDevice", "'STATUS_SUCCESS'"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
