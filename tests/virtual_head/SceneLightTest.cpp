#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "virtual_head/SceneFrames.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

constexpr double kBlack = 2;  // what a sensor gives in the dark

HeadDescription SmallScene() {
    HeadDescription description;
    description.width = 160;
    description.height = 128;
    return description;
}

Exposure AllOff() {
    Exposure exposure;
    exposure.light.strobeState = 4;
    return exposure;
}
Exposure Strobe(int mode, bool color) {
    Exposure exposure;
    exposure.light.triggerMode = mode;
    exposure.color = color;
    return exposure;
}
Exposure Lines() {
    Exposure exposure = AllOff();
    exposure.light.triggerMode = 1;
    exposure.light.laserEnable = true;
    return exposure;
}
Exposure Pattern() {
    Exposure exposure = AllOff();
    exposure.light.triggerMode = 2;
    exposure.light.projectType = 1;
    exposure.light.projectorBrightness = 40;
    return exposure;
}
Exposure Infrared() {
    Exposure exposure = AllOff();
    exposure.light.triggerMode = 1;
    exposure.light.irLaserEnable = true;
    exposure.light.irLaserLevel = 5;
    return exposure;
}

/// One number that makes a light brighter: the exposure without it, how it is set, and values that
/// grow. The first of them is dark.
struct Knob {
    const char* name;
    Exposure exposure;
    std::function<void(Exposure&, int)> set;
    std::vector<int> values;
    bool startsDark = true;
};

void PrintTo(const Knob& knob, std::ostream* out) {
    *out << knob.name;
}

std::vector<Knob> Knobs() {
    const auto exposure = [](Exposure& e, int value) {
        e.sensors[0].exposure = e.sensors[1].exposure = value;
    };
    const auto gain = [](Exposure& e, int value) { e.sensors[0].gain = e.sensors[1].gain = value; };
    const std::vector<int> duties{0, 10, 40, 70, 100};
    const std::vector<int> times{0, 100, 500, 1000, 2000};
    const std::vector<int> exposures{1, 500, 2000, 5000, 10000};
    const std::vector<int> gains{0, 1, 3, 6};
    return {
        {"StrobeExposure", Strobe(1, false), exposure, exposures},
        {"ColourExposure", Strobe(6, true), exposure, exposures},
        {"LinesExposure", Lines(), exposure, exposures},
        {"PatternExposure", Pattern(), exposure, exposures},
        {"InfraredExposure", Infrared(), exposure, exposures},
        {"StrobeGain", Strobe(1, false), gain, gains, false},
        {"ColourGain", Strobe(6, true), gain, gains, false},
        {"LinesGain", Lines(), gain, gains, false},
        {"StrobeDutyPlain", Strobe(1, false), [](Exposure& e, int v) { e.light.strobeDuty[1] = v; },
         duties},
        {"StrobeDutyBesideTexture", Strobe(6, false),
         [](Exposure& e, int v) { e.light.strobeDuty[2] = v; }, duties},
        {"StrobeDutyTexture", Strobe(6, true),
         [](Exposure& e, int v) { e.light.strobeDuty[0] = v; }, duties},
        {"StrobeTimeWithTexture", Strobe(6, true),
         [](Exposure& e, int v) { e.light.strobeWorkTime[0] = v; }, times},
        {"StrobeTimeWithout", Strobe(1, false),
         [](Exposure& e, int v) { e.light.strobeWorkTime[1] = v; }, times},
        {"LinesDuty", Lines(), [](Exposure& e, int v) { e.light.laserLineDuty = v; }, duties},
        {"LinesTime", Lines(), [](Exposure& e, int v) { e.light.laserLineWorkTime = v; }, times},
        {"ProjectorBrightness", Pattern(),
         [](Exposure& e, int v) { e.light.projectorBrightness = v; }, duties},
        {"ProjectorDuty", Pattern(), [](Exposure& e, int v) { e.light.projectorDuty = v; }, duties},
        {"ProjectorTime", Pattern(), [](Exposure& e, int v) { e.light.projectorWorkTime = v; },
         times},
        {"InfraredLevel",
         Infrared(),
         [](Exposure& e, int v) { e.light.irLaserLevel = v; },
         {0, 1, 4, 7, 10}},
        {"InfraredDuty", Infrared(), [](Exposure& e, int v) { e.light.irLaserDuty = v; }, duties},
        {"InfraredTime", Infrared(), [](Exposure& e, int v) { e.light.irLaserWorkTime = v; },
         times},
    };
}

class SceneKnobs : public testing::TestWithParam<Knob> {};

TEST_P(SceneKnobs, EachStepIsBrighterInEveryImage) {
    const SceneFrames frames(SmallScene());
    Exposure exposure = GetParam().exposure;
    double left = 0;
    double right = 0;
    for (const int value : GetParam().values) {
        GetParam().set(exposure, value);
        const auto frame = frames.Frame(exposure);
        const bool first = value == GetParam().values.front();
        if (first && GetParam().startsDark) {
            EXPECT_EQ(Mean(frame.second), kBlack);
        } else {
            EXPECT_GT(Mean(frame.second), right) << value;
            EXPECT_TRUE(exposure.color || Mean(frame.first) > left) << value;
        }
        left = Mean(frame.first);
        right = Mean(frame.second);
    }
}

INSTANTIATE_TEST_SUITE_P(All, SceneKnobs, testing::ValuesIn(Knobs()),
                         [](const auto& knob) { return knob.param.name; });

class SceneLight : public testing::Test {
protected:
    double Left(const Exposure& exposure) const { return Mean(m_frames.Frame(exposure).first); }
    double Right(const Exposure& exposure) const { return Mean(m_frames.Frame(exposure).second); }
    bool Dark(const Exposure& exposure) const {
        return Right(exposure) == kBlack && (exposure.color || Left(exposure) == kBlack);
    }

    const SceneFrames m_frames{SmallScene()};
};

TEST_F(SceneLight, WithoutLightItIsDark) {
    Exposure exposure = AllOff();
    for (const int mode : {1, 2, 3, 4, 5, 6}) {
        for (const bool color : {false, true}) {
            exposure.light.triggerMode = mode;
            exposure.color = color;
            EXPECT_TRUE(Dark(exposure)) << mode << color;
        }
    }
}

TEST_F(SceneLight, TooLongAnExposureSaturates) {
    for (const bool color : {false, true}) {
        Exposure exposure = Strobe(6, color);
        exposure.sensors[0].exposure = exposure.sensors[1].exposure = 1000000;
        EXPECT_GT(Right(exposure), 235) << color;
    }
}

TEST_F(SceneLight, AtPowerOnNothingButTheLinesIsOverexposed) {
    const auto overexposed = [&](const Exposure& exposure) {
        const auto image = m_frames.Frame(exposure).second;
        return static_cast<double>(std::count(image.begin() + 4, image.end(), 255)) /
               static_cast<double>(image.size());
    };
    EXPECT_EQ(overexposed(Strobe(6, false)), 0);
    EXPECT_LT(overexposed(Strobe(6, true)), 0.02);
    EXPECT_GT(Right(Strobe(6, true)), 70) << "the colour image is well lit";
}

TEST_F(SceneLight, LinesStandOutInTheLightOfPowerOn) {
    Exposure exposure = Strobe(6, false);
    const auto without = m_frames.Frame(exposure).first;
    exposure.light.laserEnable = true;
    const auto with = m_frames.Frame(exposure).first;
    EXPECT_GT(*std::max_element(with.begin(), with.end()), 180);
    EXPECT_LT(*std::max_element(without.begin() + 4, without.end()), 110);
}

TEST_F(SceneLight, EachLightNeedsItsOwnTriggerModeAndMonoFrames) {
    const auto visibleIn = [&](Exposure exposure) {
        std::vector<int> modes;
        for (const int mode : {1, 2, 3, 6}) {
            exposure.light.triggerMode = mode;
            exposure.color = true;
            EXPECT_TRUE(Dark(exposure)) << "colour, mode " << mode;
            exposure.color = false;
            if (!Dark(exposure)) {
                modes.push_back(mode);
            }
        }
        return modes;
    };
    EXPECT_EQ(visibleIn(Lines()), (std::vector<int>{1, 6}));
    EXPECT_EQ(visibleIn(Pattern()), (std::vector<int>{2, 3}));
    EXPECT_EQ(visibleIn(Infrared()), (std::vector<int>{1, 2, 3, 6}));
}

TEST_F(SceneLight, SwitchesPutLightsOut) {
    Exposure exposure = Lines();
    exposure.light.laserEnable = false;
    EXPECT_TRUE(Dark(exposure));
    exposure = Infrared();
    exposure.light.irLaserEnable = false;
    EXPECT_TRUE(Dark(exposure));
    exposure = Pattern();
    for (const int type : {0, 3, -1}) {
        exposure.light.projectType = type;
        EXPECT_TRUE(Dark(exposure)) << type;
    }
}

TEST_F(SceneLight, StrobeStatesChooseTheFrames) {
    const auto lit = [&](int state, bool color) {
        Exposure exposure = Strobe(6, color);
        exposure.light.strobeState = state;
        return !Dark(exposure);
    };
    EXPECT_TRUE(lit(1, false) && lit(1, true));
    EXPECT_TRUE(lit(2, false) && !lit(2, true));
    EXPECT_TRUE(!lit(3, false) && lit(3, true));
    EXPECT_TRUE(!lit(4, false) && !lit(4, true));
}

TEST_F(SceneLight, OneStrobeRouteGivesHalfTheLightOfBoth) {
    Exposure exposure = Strobe(1, false);
    const double both = Right(exposure) - kBlack;
    for (const int route : {0, 1}) {
        exposure.light.strobeRoute = route;
        EXPECT_NEAR((Right(exposure) - kBlack) / both, 0.5, 0.02) << route;
    }
}

TEST_F(SceneLight, TheTwoPatternsDiffer) {
    Exposure exposure = Pattern();
    const auto first = m_frames.Frame(exposure).first;
    exposure.light.projectType = 2;
    EXPECT_NE(first, m_frames.Frame(exposure).first);
}

TEST_F(SceneLight, EachSensorHasItsOwnExposureAndGain) {
    const Exposure usual = Strobe(6, false);
    Exposure exposure = usual;
    exposure.sensors[0].exposure = 10000;
    EXPECT_GT(Left(exposure), 1.5 * Left(usual));
    EXPECT_EQ(Right(exposure), Right(usual));
    exposure = usual;
    exposure.sensors[1].gain = 6;
    EXPECT_EQ(Left(exposure), Left(usual));
    EXPECT_GT(Right(exposure), 1.5 * Right(usual));
    exposure.color = true;
    Exposure usualColor = usual;
    usualColor.color = true;
    EXPECT_EQ(Right(exposure), Right(usualColor)) << "colour is the left sensor's";
}

TEST_F(SceneLight, NumbersThatNoLightHasCountAsTheNearestOne) {
    Exposure most = Pattern();
    most.light.projectorBrightness = 100;
    Exposure beyond = most;
    beyond.light.projectorBrightness = 2000000000;
    beyond.light.projectorDuty = 1000;
    EXPECT_EQ(Right(beyond), Right(most));
    beyond.light.projectorWorkTime = -5;
    EXPECT_TRUE(Dark(beyond));
}

}  // namespace
}  // namespace Korvex3Sync::tests
