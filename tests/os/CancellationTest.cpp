#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <thread>

#include "platform/os/Cancellation.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::tests {
namespace {

using namespace os;

TEST(Cancellation, CannotEndAThread) {
    Event begin;
    std::atomic<bool> through{false};
    std::atomic<pthread_t> self{};
    Event ready;
    os::Thread thread;
    ASSERT_TRUE(thread.Start([&] {
        self = pthread_self();
        ready.Set();
        begin.Wait();
        pthread_testcancel();
        through = true;
    }));
    ready.Wait();
    EXPECT_EQ(pthread_cancel(self), 0);
    begin.Set();
    thread.Join();
    EXPECT_TRUE(through);
}

TEST(CancellationOff, PutsACancellationOffUntilItsEnd) {
    std::atomic<bool> inside{false};
    std::atomic<bool> after{false};
    std::thread thread([&] {
        pthread_cancel(pthread_self());
        {
            const CancellationOff outer;
            { const CancellationOff inner; }
            pthread_testcancel();
            inside = true;
        }
        pthread_testcancel();
        after = true;
    });
    thread.join();
    EXPECT_TRUE(inside);
    EXPECT_FALSE(after);
}

}  // namespace
}  // namespace Korvex3Sync::tests
