#include "virtual_head/scene/Brightness.h"

#include <algorithm>
#include <cmath>

#include "platform/include/BoardFacts.h"
#include "virtual_head/scene/Patterns.h"

namespace Korvex3Sync::virtual_head::scene {
namespace {

// Powers at full brightness, with the power-on exposure, duty ratio and work time.
constexpr double kStrobeInColor = 1.3;
constexpr double kStrobeInMono = 0.4;
constexpr double kLines = 1.6;
constexpr double kProjector = 2.2;
constexpr double kInfrared = 1.5;

constexpr double kPulseCycle = 2000;  // microseconds from one pulse of a light to the next
constexpr double kUsualLitTime = 2500;
constexpr double kDecibelsPerGain = 1;
constexpr int kMostIrLevel = 10;

enum class Frame { Lines, Pattern, Other };

Frame FrameOf(const Exposure& exposure) {
    if (exposure.color) {
        return Frame::Other;
    }
    const int mode = exposure.light.triggerMode;
    if (hardware::ShowsLines(mode)) {
        return Frame::Lines;
    }
    return hardware::ShowsPattern(mode) ? Frame::Pattern : Frame::Other;
}

/// A value from 0 to `most` as a fraction of full power; values outside are limited.
double Part(int value, int most) {
    return static_cast<double>(std::clamp(value, 0, most)) / most;
}

/// The fraction of full power that the pulses of a light give: duty ratio in percent, work time in
/// microseconds.
double LitPart(int duty, int workTime) {
    return Part(duty, 100) * std::clamp(workTime / kPulseCycle, 0.0, 1.0);
}

double StrobePower(const Exposure& exposure) {
    const BoardState& light = exposure.light;
    const int state = light.strobeState;
    const bool lit = state == 1 || state == (exposure.color ? 3 : 2);
    const bool withTexture = exposure.color || hardware::AddsColor(light.triggerMode);
    const std::size_t duty = exposure.color ? 0 : (withTexture ? 2 : 1);
    const double rings = light.strobeRoute == 0 || light.strobeRoute == 1 ? 0.5 : 1;
    return lit ? rings * (exposure.color ? kStrobeInColor : kStrobeInMono) *
                     LitPart(light.strobeDuty[duty], light.strobeWorkTime[withTexture ? 0 : 1])
               : 0;
}

double LinesPower(const Exposure& exposure) {
    const BoardState& light = exposure.light;
    return FrameOf(exposure) == Frame::Lines && light.laserEnable
               ? kLines * LitPart(light.laserLineDuty, light.laserLineWorkTime)
               : 0;
}

double ProjectorPower(const Exposure& exposure) {
    const BoardState& light = exposure.light;
    const bool shown = light.projectType == 1 || light.projectType == 2;
    return FrameOf(exposure) == Frame::Pattern && shown
               ? kProjector * Part(light.projectorBrightness, 100) *
                     LitPart(light.projectorDuty, light.projectorWorkTime)
               : 0;
}

double InfraredPower(const Exposure& exposure) {
    const BoardState& light = exposure.light;
    return !exposure.color && light.irLaserEnable
               ? kInfrared * Part(light.irLaserLevel, kMostIrLevel) *
                     LitPart(light.irLaserDuty, light.irLaserWorkTime)
               : 0;
}

std::uint16_t Weight(double power, const SensorSetting& sensor) {
    const double taken = static_cast<double>(sensor.exposure) / kUsualLitTime *
                         std::pow(10, sensor.gain * kDecibelsPerGain / 20);
    return static_cast<std::uint16_t>(std::lround(std::clamp(power * taken * 256, 0.0, 65535.0)));
}

std::uint8_t LineSets(int laserMode) {
    switch (laserMode) {
        case 1:
            return kFirstSet;
        case 2:
            return kSecondSet;
        case 3:
            return kMiddleLine;
        default:
            return kFirstSet | kSecondSet;
    }
}

}  // namespace

Lighting LightingOf(const Exposure& exposure) {
    Lighting lighting;
    bool lines = false;
    bool projected = false;
    for (std::size_t i = 0; i < lighting.sensors.size(); ++i) {
        const SensorSetting& sensor = exposure.sensors[i];
        Weights& weights = lighting.sensors[i];
        weights = {Weight(StrobePower(exposure), sensor), Weight(ProjectorPower(exposure), sensor),
                   Weight(InfraredPower(exposure), sensor), Weight(LinesPower(exposure), sensor)};
        lines = lines || weights.lines > 0;
        projected = projected || weights.projected > 0;
    }
    lighting.lineSets = lines ? LineSets(exposure.light.laserMode) : std::uint8_t{0};
    lighting.projected = projected ? exposure.light.projectType - 1 : 0;
    return lighting;
}

}  // namespace Korvex3Sync::virtual_head::scene
