#include "camera/images/SplitPackedFrame.h"

#include <gtest/gtest.h>

#include "support/PackedFrames.h"

namespace Korvex3Sync::tests {
namespace {

class SplitPackedFrameTest : public testing::Test {
protected:
    bool Split(const unsigned char* data, int width = 8, int height = 4) {
        return SplitPackedFrame(m_frame, data, width, height, m_pool);
    }

    ImagePool m_pool;
    SplitFrame m_frame;
};

TEST_F(SplitPackedFrameTest, AMonoFrameGivesTwoImages) {
    const auto frame = support::MonoFrame(32, 11, 22, 7);
    ASSERT_TRUE(Split(frame.data()));
    ASSERT_EQ(m_frame.images.size(), 2u);
    EXPECT_EQ(m_frame.widths, (std::vector<int>{8, 8}));
    EXPECT_EQ(m_frame.heights, (std::vector<int>{4, 4}));
    EXPECT_EQ(m_frame.channels, (std::vector<int>{1, 1}));
    EXPECT_EQ(m_frame.images[0].Pixels()[31], 11);
    EXPECT_EQ(m_frame.images[1].Pixels()[31], 22);
    EXPECT_EQ(m_frame.images[1].Pixels()[3], 7) << "the key is a pixel too";
}

TEST_F(SplitPackedFrameTest, AMarkerFrameGivesOneColourImage) {
    const auto frame = support::ColorFrame(32, 33, 9);
    ASSERT_TRUE(Split(frame.data()));
    ASSERT_EQ(m_frame.images.size(), 1u);
    EXPECT_EQ(m_frame.widths, std::vector<int>{8});
    EXPECT_EQ(m_frame.heights, std::vector<int>{4});
    EXPECT_EQ(m_frame.channels, std::vector<int>{1});
    EXPECT_EQ(m_frame.images[0].Pixels()[31], 33);
}

TEST_F(SplitPackedFrameTest, FailsWithoutData) {
    EXPECT_FALSE(Split(nullptr));
    EXPECT_TRUE(m_frame.images.empty());
    EXPECT_TRUE(m_frame.widths.empty());
}

TEST_F(SplitPackedFrameTest, ASizeThatHoldsNoPixelIsRefused) {
    const auto frame = support::MonoFrame(32, 1, 2, 3);
    EXPECT_FALSE(Split(frame.data(), 0, 4));
    EXPECT_FALSE(Split(frame.data(), 8, 0));
    EXPECT_FALSE(Split(frame.data(), -8, -4));
    EXPECT_EQ(m_pool.Lent() + m_pool.Free(), 0u);
}

TEST_F(SplitPackedFrameTest, MakesNoNewBufferOnceBuffersComeBack) {
    const auto frame = support::MonoFrame(32, 1, 2, 3);
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(Split(frame.data()));
        m_frame.Clear();
    }
    EXPECT_EQ(m_pool.Free(), 2u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
