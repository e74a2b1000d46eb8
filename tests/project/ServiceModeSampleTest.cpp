#include <gtest/gtest.h>

#include <cstdlib>

#include "support/ChildProcess.h"
#include "support/Environment.h"
#include "support/OwnFolders.h"
#include "support/ProcessNamespace.h"

namespace Korvex3Sync::tests {
namespace {

// It starts hub and service, and ends others by their names: in a process namespace of its own.
TEST(GuideInServiceMode, TakesSetsThroughTheService) {
    const OwnFolders folders;
    ChildOptions options;
    options.environment = folders.Environment();
    options.environment.emplace_back("KORVEX_VIRTUAL_HEAD", "default");
    const ChildResult result = RunChild({KORVEX_GUIDE_SAMPLES "/guide_service_mode"}, options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_EQ(result.output, "20 sets through the device service\n");
}

}  // namespace
}  // namespace Korvex3Sync::tests

int main(int argc, char** argv) {
    // In builds for tests, the pauses of the start are shorter.
    if (std::getenv("KORVEX_TIME_SCALE") == nullptr) {
        Korvex3Sync::tests::SetVariable("KORVEX_TIME_SCALE", "0.3");
    }
    return Korvex3Sync::tests::RunInProcessNamespace(argc, argv, [](int count, char** arguments) {
        testing::InitGoogleTest(&count, arguments);
        return RUN_ALL_TESTS();
    });
}
