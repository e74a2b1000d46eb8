#include <gtest/gtest.h>

#include "no_memory/FailingAllocation.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::tests {
namespace {

using namespace os;

TEST(ThreadWithoutMemory, DoesNotStartAndSaysSo) {
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        Thread thread;
        bool started = false;
        {
            const FailingAllocation failing(failures + 1);
            started = thread.Start([] {});
            failed = failing.Failed();
        }
        EXPECT_EQ(started, !failed) << failures;
        EXPECT_EQ(thread.Started(), !failed) << failures;
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
