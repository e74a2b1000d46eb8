#include "sync/frames/KeyTracker.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "support/Seed.h"

namespace Korvex3Sync::tests {
namespace {

struct Taken {
    unsigned missing = 0;
    unsigned repeated = 0;
    bool operator==(const Taken&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Taken& taken) {
        return out << taken.missing << " missing, " << taken.repeated << " repeated";
    }
};

class Keys : public testing::Test {
protected:
    void Start() { ++m_run.starts; }
    void Restart() { m_run.countsFrom = ++m_run.starts; }
    /// What these keys add.
    Taken Take(const std::vector<unsigned>& keys) {
        Taken taken;
        for (unsigned key : keys) {
            const KeyStep step = m_tracker.Take(key, m_run);
            taken.missing += step.missing;
            taken.repeated += step.repeated ? 1 : 0;
        }
        return taken;
    }

    KeyTracker m_tracker;
    TriggerStarts::Run m_run;
};

TEST_F(Keys, WithoutAStartTheFirstKeyIsWhereCountingBegins) {
    EXPECT_EQ(Take({137, 138, 139}), (Taken{0, 0}));
    EXPECT_EQ(Take({142}), (Taken{2, 0}));
}

TEST_F(Keys, AfterAStartTheKeysBeforeTheFirstAreMissing) {
    Start();
    EXPECT_EQ(Take({3}), (Taken{3, 0}));
    EXPECT_EQ(Take({4, 5}), (Taken{0, 0}));
}

TEST_F(Keys, WrapAround) {
    Start();
    Take({0});
    for (unsigned key = 1; key < 1000; ++key) {
        ASSERT_EQ(Take({key % 256}), (Taken{0, 0})) << key;
    }
    EXPECT_EQ(Take({1000 % 256 + 5}), (Taken{5, 0}));
}

TEST_F(Keys, AGapAcrossTheWrapIsCountedInFull) {
    Take({250});
    EXPECT_EQ(Take({9}), (Taken{14, 0}));
}

TEST_F(Keys, AllButNineOfARoundCanBeMissing) {
    Take({10});
    EXPECT_EQ(Take({1}), (Taken{246, 0}));
}

TEST_F(Keys, ALateFrameTakesThePlaceOfItsMissingKey) {
    Start();
    // One key is missing at first; the set of the late frame is one too many for that.
    EXPECT_EQ(Take({0, 1, 3, 2, 4}), (Taken{1, 1}));
    EXPECT_EQ(Take({13, 5, 14}), (Taken{8, 1})) << "eight steps back";
    EXPECT_EQ(Take({255, 1, 254, 0, 2}), (Taken{241, 2})) << "across the wrap";
}

TEST_F(Keys, AnEarlierFrameOnceMoreIsARepeat) {
    Start();
    EXPECT_EQ(Take({0, 1, 2, 1, 2, 3}), (Taken{0, 2}));
    EXPECT_EQ(Take({5, 4, 4, 6}), (Taken{1, 2}));
}

TEST_F(Keys, AFrameOfTheFormerRunCanBeLateAfterAStart) {
    Start();
    Take({0, 1, 2, 4});
    Start();
    EXPECT_EQ(Take({3, 5, 6}), (Taken{0, 1}));
    EXPECT_FALSE(m_tracker.OfLatestRun());
    EXPECT_EQ(Take({5}), (Taken{5, 0})) << "a key that had come is one of the new run";
    EXPECT_TRUE(m_tracker.OfLatestRun());
    EXPECT_EQ(Take({4}), (Taken{0, 1})) << "missing in the new run, then late";
}

TEST_F(Keys, ALateFrameLeavesTheNewestKeyAsItIs) {
    Take({7, 9, 8});
    EXPECT_EQ(m_tracker.Last(), 9u);
    EXPECT_EQ(Take({10}), (Taken{0, 0}));
}

TEST_F(Keys, AnEqualKeyIsARepeatAndNothingIsMissing) {
    Start();
    EXPECT_EQ(Take({0, 1, 1, 1, 2, 2, 3}), (Taken{0, 3}));
}

TEST_F(Keys, ANewRunThatBeginsAtOnceMissesNothing) {
    Start();
    Take({0, 1, 2, 3});
    Start();
    EXPECT_EQ(Take({0, 1, 2}), (Taken{0, 0}));
}

TEST_F(Keys, FramesOfTheFormerRunThatStillCameAreNotMissing) {
    Start();
    Take({0, 1, 2, 3});
    Start();
    EXPECT_EQ(Take({4, 5, 6}), (Taken{0, 0}));
    EXPECT_EQ(Take({0, 1, 2}), (Taken{0, 0}));
}

TEST_F(Keys, WhatTheNewRunLostAtItsBeginningIsMissing) {
    Start();
    Take({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    Start();
    EXPECT_EQ(Take({10, 11}), (Taken{0, 0}));
    EXPECT_EQ(Take({2}), (Taken{2, 0}));
    EXPECT_EQ(Take({12}), (Taken{9, 0})) << "settled: no frame of the former run any more";
}

TEST_F(Keys, ARunOfOneTriggerAfterARunOfOneIsNoRepeat) {
    for (int run = 0; run < 3; ++run) {
        Start();
        EXPECT_EQ(Take({0}), (Taken{0, 0}));
    }
}

TEST_F(Keys, ARepeatRightAfterAStartIsARepeat) {
    Start();
    Take({0, 1, 2, 3});
    Start();
    EXPECT_EQ(Take({3, 0, 1}), (Taken{0, 1}));
}

TEST_F(Keys, AFormerRunThatEndsWithTheLastKeyOrWrapsAfterTheStart) {
    Start();
    Take({0});
    for (unsigned key = 1; key < 256; ++key) {
        Take({key});
    }
    Start();
    EXPECT_EQ(Take({0, 1, 2}), (Taken{0, 0})) << "of either run";
    EXPECT_EQ(Take({0, 1}), (Taken{0, 0})) << "it was the former run that wrapped";
}

TEST_F(Keys, OneRoundAfterAStartAllIsSettled) {
    Take({255});
    Start();
    for (unsigned key = 0; key < 256; ++key) {
        ASSERT_EQ(Take({key}), (Taken{0, 0}));
    }
    Take({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_TRUE(m_tracker.OfLatestRun());
    EXPECT_EQ(Take({1}), (Taken{246, 0}));
}

TEST_F(Keys, AfterARestartTheFirstKeyIsWhereCountingBegins) {
    Start();
    Take({0, 1, 2, 3});
    Restart();
    EXPECT_EQ(Take({137, 138}), (Taken{0, 0}));
    EXPECT_EQ(Take({141}), (Taken{2, 0}));
    EXPECT_EQ(Take({141}), (Taken{0, 1}));
}

TEST_F(Keys, AfterARestartTheKeyOfBeforeIsNoRepeat) {
    Start();
    Take({0, 1, 2, 3});
    Restart();
    EXPECT_EQ(Take({3, 4}), (Taken{0, 0}));
}

TEST_F(Keys, StartsBeforeARestartAreForgottenWithIt) {
    Take({7, 8, 9});
    Start();
    Restart();
    EXPECT_EQ(Take({5, 6}), (Taken{0, 0})) << "of those starts no key came";
    Start();
    Take({0});
    Restart();
    EXPECT_EQ(Take({200, 201, 3, 4}), (Taken{57, 0})) << "nothing is unsettled any more";
}

TEST_F(Keys, AStartAfterARestartIsOneLikeAnyOther) {
    Start();
    Take({0, 1, 2, 3});
    Restart();
    Start();
    EXPECT_EQ(Take({2, 3}), (Taken{2, 0}));
    Restart();
    Take({90, 91});
    Start();
    EXPECT_EQ(Take({92, 1, 2}), (Taken{1, 0}));
}

/// Losses and frames that come up to eight triggers late, in any mixture: what is delivered, less
/// what was repeated, plus what is missing, are the triggers up to the newest frame.
TEST_F(Keys, LateFramesLeaveTheSumOfTheTriggersExact) {
    const unsigned seed = support::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Start();
    std::uint64_t delivered = 0;
    Taken taken;
    const auto take = [&](unsigned trigger) {
        const Taken step = Take({trigger % 256});
        taken.missing += step.missing;
        taken.repeated += step.repeated;
        ++delivered;
    };
    std::multimap<unsigned, unsigned> late;  // by the trigger that it comes after
    for (unsigned trigger = 0; trigger < 20000; ++trigger) {
        switch (random() % 20) {
            case 0:
                late.emplace(trigger + 1 + random() % 8, trigger);
                break;
            case 1:
                break;
            default:
                take(trigger);
                ASSERT_EQ(delivered - taken.repeated + taken.missing, trigger + 1);
                // Later the newest frame may be up to eight triggers ahead of it.
                for (auto due = late.begin(); due != late.end() && due->first <= trigger;
                     due = late.erase(due)) {
                    if (trigger - due->second <= 8) {
                        take(due->second);
                    }
                }
                ASSERT_EQ(delivered - taken.repeated + taken.missing, trigger + 1);
        }
    }
    EXPECT_GT(taken.repeated, 500u);
}

/// Runs of any length, each with some frames that come only after the next start, and with losses
/// in any place but the first frame of a run and the frames that come late.
TEST_F(Keys, AThousandRandomScansAreCountedExactly) {
    const unsigned seed = support::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int scan = 0; scan < 1000; ++scan) {
        m_tracker = {};
        Taken expected;
        Taken seen;
        const auto add = [&](const Taken& taken) {
            seen.missing += taken.missing;
            seen.repeated += taken.repeated;
        };
        std::vector<unsigned> late;
        for (unsigned run = 0; run < 6; ++run) {
            Start();
            add(Take(late));
            late.clear();
            unsigned trigger = 0;
            add(Take({0}));
            const unsigned triggers = random() % 900;
            while (++trigger < triggers) {
                if (random() % 40 == 0) {
                    const unsigned lost = random() % 100;
                    expected.missing += lost;
                    trigger += lost;
                }
                const std::vector<unsigned> times(random() % 50 == 0 ? 2 : 1, trigger % 256);
                expected.repeated += static_cast<unsigned>(times.size()) - 1;
                add(Take(times));
            }
            for (unsigned waiting = random() % 64; waiting > 0; --waiting) {
                late.push_back(trigger++ % 256);
            }
        }
        ASSERT_EQ(seen, expected) << "scan " << scan;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
