#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "platform/os/Thread.h"

namespace {

/// Allocations of this thread until one fails; 0: none fails.
thread_local int t_untilFailure = 0;

}  // namespace

// This program's own allocation, so that it can fail when told. Inlined, the pairs would look
// mismatched.

[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* const block =
        t_untilFailure > 0 && --t_untilFailure == 0 ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace Korvex3Sync::os {
namespace {

TEST(ThreadWithoutMemory, DoesNotStartAndSaysSo) {
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        Thread thread;
        t_untilFailure = failures + 1;
        const bool started = thread.Start([] {});
        failed = t_untilFailure == 0;
        t_untilFailure = 0;
        EXPECT_EQ(started, !failed) << failures;
        EXPECT_EQ(thread.Started(), !failed) << failures;
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace Korvex3Sync::os
