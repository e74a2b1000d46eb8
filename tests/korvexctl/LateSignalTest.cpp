#include <gtest/gtest.h>

#include <atomic>
#include <csignal>

#include "korvexctl/Interrupts.h"
#include "platform/os/InterruptWatch.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

namespace {

TEST(KorvexctlInterruptWatch, AHandlerThatComesAfterItsEndTellsNoOther) {
    struct sigaction late {};
    {
        const UnwantedInterrupt ended("no signal came");
        ::sigaction(SIGINT, nullptr, &late);
    }
    late.sa_handler(SIGINT);
    std::atomic<int> calls{0};
    {
        const CountingInterrupt next(calls);
        std::raise(SIGINT);
        EXPECT_TRUE(support::WaitUntil([&calls] { return calls > 0; }));
    }
    EXPECT_EQ(calls, 1);
}

TEST(KorvexctlInterruptWatch, ItsThreadTakesNoSignalsItself) {
    std::atomic<int> blocked{-1};
    const os::InterruptWatch watch(
        [&blocked] {
            sigset_t mask;
            ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
            blocked = ::sigismember(&mask, SIGINT) + ::sigismember(&mask, SIGTERM) +
                      ::sigismember(&mask, SIGHUP);
        },
        1);
    std::raise(SIGINT);
    EXPECT_TRUE(support::WaitUntil([&blocked] { return blocked >= 0; }));
    EXPECT_EQ(blocked, 3);
}

}  // namespace

}  // namespace Korvex3Sync::tests
