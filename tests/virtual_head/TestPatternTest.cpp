#include <gtest/gtest.h>

#include "virtual_head/ImageSource.h"
#include "virtual_head/Unpacked.h"

namespace Korvex3Sync::virtual_head {
namespace {

struct Size {
    int width;
    int height;
};

class TestPatternTest : public testing::TestWithParam<Size> {
protected:
    TestPatternTest() {
        m_description.width = GetParam().width;
        m_description.height = GetParam().height;
        m_pixels = static_cast<std::size_t>(GetParam().width) *
                   static_cast<std::size_t>(GetParam().height);
    }

    tests::Unpacked Frame(std::uint64_t trigger, bool color) const {
        std::vector<std::uint8_t> packed(2 * m_pixels);
        const Exposure exposure{trigger, static_cast<std::uint8_t>(trigger & 0xFFU), color, {}};
        m_source->WritePacked(exposure, packed.data());
        return tests::Unpack(packed.data(), m_pixels);
    }

    HeadDescription m_description;
    std::size_t m_pixels = 0;
    std::shared_ptr<ImageSource> m_source;
};

TEST_P(TestPatternTest, FramesDifferFromEachOtherAndBetweenTheSensors) {
    m_source = MakeTestPattern(m_description);
    for (std::uint64_t trigger = 0; trigger < 9; ++trigger) {
        const auto mono = Frame(trigger, false);
        const auto next = Frame(trigger + 1, false);
        EXPECT_FALSE(mono.marker);
        EXPECT_NE(mono.first, mono.second);
        EXPECT_NE(mono.first, next.first);
        EXPECT_NE(mono.second, next.second);
        const auto color = Frame(trigger, true);
        EXPECT_TRUE(color.marker);
        EXPECT_NE(color.second, Frame(trigger + 1, true).second);
    }
}

TEST_P(TestPatternTest, EveryFrameCarriesItsKey) {
    m_source = MakeTestPattern(m_description);
    for (const std::uint64_t trigger : {0, 1, 255, 256, 1000}) {
        EXPECT_EQ(Frame(trigger, false).key, trigger % 256);
        EXPECT_EQ(Frame(trigger, true).key, trigger % 256);
    }
}

TEST_P(TestPatternTest, HeadWithoutColorHasItsMonoFrames) {
    m_description.color = false;
    m_source = MakeTestPattern(m_description);
    EXPECT_FALSE(Frame(0, false).marker);
}

INSTANTIATE_TEST_SUITE_P(Sizes, TestPatternTest,
                         testing::Values(Size{16, 16}, Size{2000, 16}, Size{18, 1000},
                                         Size{640, 480}));

}  // namespace
}  // namespace Korvex3Sync::virtual_head
