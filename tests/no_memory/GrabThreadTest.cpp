#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

#include "recorder/Recorder.h"
#include "support/Golden.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

/// Leaves no memory for the stack of any thread that is started.
class NoStacks {
public:
    NoStacks() {
        EXPECT_EQ(::pthread_getattr_default_np(&m_before), 0);
        pthread_attr_t larger;
        EXPECT_EQ(::pthread_getattr_default_np(&larger), 0);
        EXPECT_EQ(::pthread_attr_setstacksize(&larger, kMoreThanAnyAddress), 0);
        EXPECT_EQ(::pthread_setattr_default_np(&larger), 0);
        ::pthread_attr_destroy(&larger);
    }
    ~NoStacks() {
        EXPECT_EQ(::pthread_setattr_default_np(&m_before), 0);
        ::pthread_attr_destroy(&m_before);
    }
    NoStacks(const NoStacks&) = delete;
    NoStacks& operator=(const NoStacks&) = delete;

private:
    static constexpr std::size_t kMoreThanAnyAddress = std::size_t{1} << 60;

    pthread_attr_t m_before{};
};

TEST(GrabThreadWithoutMemory, DoesNotStartAndTheLogSaysSo) {
    recorder::Recorder::Get().Reset();
    IManagerSync manager;
    support::Output output;
    {
        const NoStacks none;
        EXPECT_EQ(ConnectRecorded(manager), STATUS_SUCCESS);
    }
    EXPECT_TRUE(support::MatchesGolden("Connect", "a grab thread does not start", output.End()));
    EXPECT_EQ(recorder::Recorder::Get().Count("SnapShot"), 0u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
