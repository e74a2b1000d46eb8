#include <gtest/gtest.h>

#include <atomic>
#include <csignal>

#include "korvexctl/Interrupts.h"
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

}  // namespace

}  // namespace Korvex3Sync::tests
