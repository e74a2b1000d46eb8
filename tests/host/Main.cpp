#include <gtest/gtest.h>

#include <QCoreApplication>

#include <filesystem>

#include "support/Environment.h"
#include "support/ProcessNamespace.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

int RunHostTests(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    const fs::path folder = QCoreApplication::applicationDirPath().toStdString();
    for (const char* program : {"hub.exe", "ZrSyncService.exe"}) {
        LinkProgram(fs::path(KORVEX_PROGRAMS) / program, folder / program);
    }
    // In the folder that is removed last: some systems do not remove a file that this process has
    // open.
    const fs::path runtime = RuntimeFolderIn(folder).parent_path();
    fs::create_directory(runtime);
    fs::permissions(runtime, fs::perms::owner_all);
    for (const auto& [name, value] : FoldersIn(folder)) {
        SetVariable(name, value);
    }
    return RUN_ALL_TESTS();
}

}  // namespace
}  // namespace Korvex3Sync::tests

int main(int argc, char** argv) {
    return Korvex3Sync::tests::RunInProcessNamespace(argc, argv, Korvex3Sync::tests::RunHostTests);
}
