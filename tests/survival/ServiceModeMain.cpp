#include <gtest/gtest.h>

#include "support/ProcessNamespace.h"

namespace Korvex3Sync::tests::survival {
namespace {

/// In a process namespace, because each host ends the hubs and services that run, by name.
int RunTests(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

}  // namespace
}  // namespace Korvex3Sync::tests::survival

int main(int argc, char** argv) {
    return Korvex3Sync::tests::RunInProcessNamespace(argc, argv,
                                                     Korvex3Sync::tests::survival::RunTests);
}
