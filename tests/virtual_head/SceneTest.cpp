#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "virtual_head/SceneFrames.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

struct Size {
    int width;
    int height;
};

class SceneTest : public testing::TestWithParam<Size> {
protected:
    SceneTest() {
        m_description.width = GetParam().width;
        m_description.height = GetParam().height;
    }

    static Exposure At(std::uint64_t trigger, bool color) {
        Exposure exposure;
        exposure.trigger = trigger;
        exposure.key = static_cast<std::uint8_t>(trigger & 0xFFU);
        exposure.color = color;
        exposure.light.triggerMode = 6;
        exposure.light.laserEnable = true;
        return exposure;
    }

    HeadDescription m_description;
};

TEST_P(SceneTest, FramesDifferFromPoseToPoseAndBetweenTheSensors) {
    const SceneFrames frames(m_description);
    const int poses = m_description.scene.poses;
    for (int trigger = 0; trigger < poses; ++trigger) {
        const auto number = static_cast<std::uint64_t>(trigger);
        const auto mono = frames.Frame(At(number, false));
        const auto color = frames.Frame(At(number, true));
        EXPECT_FALSE(mono.marker);
        EXPECT_TRUE(color.marker);
        EXPECT_NE(mono.first, mono.second);
        for (int other = trigger + 1; other < poses; ++other) {
            const auto otherNumber = static_cast<std::uint64_t>(other);
            EXPECT_NE(mono.first, frames.Frame(At(otherNumber, false)).first);
            EXPECT_NE(mono.second, frames.Frame(At(otherNumber, false)).second);
            EXPECT_NE(color.second, frames.Frame(At(otherNumber, true)).second);
        }
    }
}

TEST_P(SceneTest, ThePosesComeOverAndOver) {
    const SceneFrames frames(m_description);
    const auto poses = static_cast<std::uint64_t>(m_description.scene.poses);
    EXPECT_EQ(frames.Frame(At(1, false)).first, frames.Frame(At(1 + 64 * poses, false)).first);
}

TEST_P(SceneTest, EveryFrameCarriesItsKey) {
    const SceneFrames frames(m_description);
    for (const std::uint64_t trigger : {0, 1, 255, 256, 1000}) {
        EXPECT_EQ(frames.Frame(At(trigger, false)).key, trigger % 256);
        EXPECT_EQ(frames.Frame(At(trigger, true)).key, trigger % 256);
    }
}

TEST_P(SceneTest, HeadWithoutColorHasItsMonoFrames) {
    m_description.color = false;
    const SceneFrames frames(m_description);
    EXPECT_FALSE(frames.Frame(At(0, false)).marker);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, SceneTest, testing::Values(Size{64, 32}, Size{2000, 16}, Size{18, 1000}, Size{320, 240}),
    [](const auto& size) {
        return std::to_string(size.param.width) + "x" + std::to_string(size.param.height);
    });

HeadDescription SmallHead() {
    HeadDescription description;
    description.width = 160;
    description.height = 128;
    return description;
}

TEST(Scene, PreparingTwiceChangesNothing) {
    const SceneFrames frames(SmallHead());
    EXPECT_TRUE(frames.Source().Prepare());
    const auto before = frames.Frame(Exposure{});
    EXPECT_TRUE(frames.Source().Prepare());
    EXPECT_EQ(before.first, frames.Frame(Exposure{}).first);
}

TEST(Scene, EveryThreadGetsTheFrameOfItsOwnLight) {
    const SceneFrames frames(SmallHead());
    Exposure dark;
    dark.light.strobeState = 4;
    const Exposure lit;
    const auto wantDark = frames.Frame(dark);
    const auto wantLit = frames.Frame(lit);
    std::atomic<int> wrong{0};
    const auto fetch = [&](const Exposure& exposure, const Unpacked& want) {
        for (int i = 0; i < 50; ++i) {
            const auto frame = frames.Frame(exposure);
            wrong += frame.first != want.first || frame.second != want.second ? 1 : 0;
        }
    };
    std::thread first([&] { fetch(dark, wantDark); });
    std::thread second([&] { fetch(lit, wantLit); });
    fetch(lit, wantLit);
    first.join();
    second.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Scene, ColoursStandInTheirPlacesOfTheMosaic) {
    HeadDescription description = SmallHead();
    description.width = 640;
    description.height = 512;
    Exposure exposure;
    exposure.color = true;
    const auto mosaic = SceneFrames(description).Frame(exposure).second;
    const auto at = [&](std::size_t x, std::size_t y) { return int{mosaic[y * 640 + x]}; };
    // The sphere's bands are orange and cream, the box is blue: both without doubt.
    const auto redder = [&](std::size_t x, std::size_t y) {
        return at(x & ~std::size_t{1}, y & ~std::size_t{1}) - at(x | 1U, y | 1U);
    };
    EXPECT_GT(redder(260, 230), 20) << "a band of the sphere";
    EXPECT_LT(redder(450, 330), -5) << "the box";
}

TEST(Scene, ASingleLineIsOneOfAllLines) {
    const SceneFrames frames(SmallHead());
    Exposure exposure;
    exposure.light.triggerMode = 1;
    exposure.light.laserEnable = true;
    exposure.light.strobeState = 4;
    const auto lit = [&](int mode) {
        exposure.light.laserMode = mode;
        auto image = frames.Frame(exposure).first;
        std::for_each(image.begin(), image.end(), [](auto& grey) { grey = grey > 10; });
        return image;
    };
    const auto all = lit(0);
    std::size_t before = 0;
    for (const int mode : {3, 2, 1}) {
        const auto some = lit(mode);
        std::size_t count = 0;
        for (std::size_t i = 0; i < some.size(); ++i) {
            count += some[i];
            ASSERT_LE(some[i], all[i]) << "mode " << mode << " lights what mode 0 does not";
        }
        EXPECT_GT(count, before) << "mode " << mode;
        before = mode == 3 ? count : 0;
    }
    EXPECT_NE(lit(1), lit(2));
}

}  // namespace
}  // namespace Korvex3Sync::tests
