#include <gtest/gtest.h>

#include <QCoreApplication>

#include "support/ProcessNamespace.h"

namespace Korvex3Sync::tests {
namespace {

int RunTests(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

}  // namespace
}  // namespace Korvex3Sync::tests

int main(int argc, char** argv) {
    using namespace Korvex3Sync::tests;
    return RunInProcessNamespace(argc, argv, RunTests);
}
