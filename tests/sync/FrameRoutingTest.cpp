#include "sync/frames/FrameRouting.h"

#include <gtest/gtest.h>

#include "support/Golden.h"
#include "sync/Ledger.h"

namespace Korvex3Sync::tests {
namespace {

class FrameRouting : public testing::Test {
protected:
    ~FrameRouting() override {
        m_catch.ReleaseAll();
        while (m_pairing.Size() > 0) {
            m_pairing.DropFirst(m_ledger);
        }
        EXPECT_EQ(m_ledger.Live(), 0u) << "images were lost";
    }
    Routed Route(unsigned key, int images, bool colorExpected = false) {
        DecodedFrame frame;
        frame.colorExpected = colorExpected;
        frame.key = key;
        frame.width = 8;
        for (int i = 0; i < images; ++i) {
            frame.images.push_back(m_ledger.Make());
            frame.widths.push_back(8);
            frame.heights.push_back(4);
            frame.channels.push_back(1);
        }
        return RouteFrame(frame, m_pairing, m_catch, m_ledger);
    }

    Ledger m_ledger;
    FramePairing m_pairing;
    ColorCatch m_catch;
};

TEST_F(FrameRouting, AWaitingSnapshotTakesThreeColourFramesAndTheFourthGoesTheNormalWay) {
    EXPECT_EQ(Route(7, 2), Routed::Paired);
    m_catch.Begin();
    m_catch.Arm();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Route(7, 1), Routed::Caught);
        EXPECT_EQ(m_pairing.Size(), 1u) << "the waiting set is not touched";
    }
    EXPECT_TRUE(m_ledger.delivered.empty());
    EXPECT_FALSE(m_catch.Armed());
    EXPECT_EQ(Route(7, 1), Routed::Paired);
    EXPECT_EQ(m_ledger.delivered, std::vector<std::string>{"1 2 6 8x4 c1 c1 c1"});
    EXPECT_EQ(m_ledger.colorsLost, 0);
}

TEST_F(FrameRouting, MonoFramesPassASnapshotBy) {
    m_catch.Begin();
    m_catch.Arm();
    EXPECT_EQ(Route(7, 2), Routed::Paired);
    EXPECT_EQ(m_pairing.Size(), 1u);
    EXPECT_TRUE(m_catch.Armed());
}

TEST_F(FrameRouting, ASetWhoseColourASnapshotTookDoesNotMissIt) {
    Route(7, 2, true);
    m_catch.Arm();
    EXPECT_EQ(Route(7, 1), Routed::Caught);
    Route(8, 2, true);
    EXPECT_EQ(m_ledger.delivered, std::vector<std::string>{"1 2 8x4 c1 c1"});
    EXPECT_EQ(m_ledger.colorsMissing, 0);
    EXPECT_EQ(m_ledger.colorsLost, 0);
    Route(9, 2, true);
    EXPECT_EQ(m_ledger.colorsMissing, 1);
}

TEST_F(FrameRouting, AMonoSetThatTheBoundDropsIsLost) {
    for (unsigned key : {70u, 30u, 60u, 40u, 20u}) {
        VideoItem item;
        item.pMonoImage0 = m_ledger.Make();
        item.pMonoImage1 = key == 20 ? m_ledger.Make() : Image();
        m_pairing.Store(key, std::move(item));
    }
    Route(200, 1);
    EXPECT_EQ(m_pairing.Size(), 4u);
    EXPECT_EQ(m_ledger.setsLost, 1);
    EXPECT_EQ(m_ledger.colorsLost, 1);
}

TEST_F(FrameRouting, MoreThanFourItemsLoseTheSmallestKeyOneForEachFrame) {
    for (unsigned key : {70u, 30u, 60u, 40u, 20u, 50u}) {
        VideoItem item;
        item.pMonoImage0 = m_ledger.Make();
        m_pairing.Store(key, std::move(item));
    }
    support::Output output;
    Route(200, 1);
    EXPECT_EQ(m_pairing.Size(), 5u);
    Route(200, 1);
    EXPECT_EQ(m_pairing.Size(), 4u);
    Route(200, 1);
    EXPECT_EQ(m_pairing.Size(), 4u) << "four may stay";
    EXPECT_TRUE(support::MatchesGolden("OnFrame", "two more items than may wait", output.End()));
    // Colour frames without a mono were 7, 8 and 9; the smallest keys held 5 and 2.
    EXPECT_EQ(m_ledger.Released(), (std::vector<std::uint32_t>{7, 5, 8, 2, 9}));
}

TEST_F(FrameRouting, TheBoundIsNotLookedAtOnTheWayToASnapshot) {
    for (unsigned key = 0; key < 6; ++key) {
        m_pairing.Store(key, {});
    }
    m_catch.Begin();
    m_catch.Arm();
    Route(200, 1);
    EXPECT_EQ(m_pairing.Size(), 6u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
