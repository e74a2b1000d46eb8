#include "virtual_head/config/SceneRules.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <string_view>

namespace Korvex3Sync::virtual_head {
namespace {

using Real = double SceneDescription::*;
using Whole = int SceneDescription::*;
using Place = std::array<double, 3> SceneDescription::*;

struct Entry {
    SceneRule rule;
    Real real = nullptr;
    Whole whole = nullptr;
    Place place = nullptr;
};

constexpr Entry Number(const char* key, Real member, double lowest, double highest) {
    return {{key, false, lowest, highest, 1}, member, nullptr, nullptr};
}
constexpr Entry Number(const char* key, Whole member, double lowest, double highest) {
    return {{key, true, lowest, highest, 1}, nullptr, member, nullptr};
}
constexpr Entry Number(const char* key, Place member, double lowest, double highest) {
    return {{key, false, lowest, highest, 3}, nullptr, nullptr, member};
}

using Scene = SceneDescription;
constexpr std::array kEntries{
    Number("focal_length", &Scene::focalLength, 200, 10000),
    Number("baseline", &Scene::baseline, 10, 500),
    Number("toe_in", &Scene::toeIn, 0, 45),
    Number("distance", &Scene::distance, 100, 1000),
    Number("sphere_center", &Scene::sphereCenter, -500, 500),
    Number("sphere_radius", &Scene::sphereRadius, 1, 200),
    Number("box_center", &Scene::boxCenter, -500, 500),
    Number("box_size", &Scene::boxSize, 1, 400),
    Number("box_turn", &Scene::boxTurn, -180, 180),
    Number("projector", &Scene::projector, -300, 300),
    Number("laser_lines", &Scene::laserLines, 1, 25),
    Number("laser_spacing", &Scene::laserSpacing, 2, 100),
    Number("laser_width", &Scene::laserWidth, 0.1, 5),
    Number("laser_angle", &Scene::laserAngle, 0, 60),
    Number("poses", &Scene::poses, 1, 8),
    Number("motion", &Scene::motion, 0, 30),
    Number("swing", &Scene::swing, 0, 15),
};

constexpr auto kRules = [] {
    std::array<SceneRule, kEntries.size()> rules{};
    for (std::size_t i = 0; i < rules.size(); ++i) {
        rules[i] = kEntries[i].rule;
    }
    return rules;
}();

// The nearest point of the object has to stay this far before the head.
constexpr double kNearest = 40;

const Entry& EntryOf(const SceneRule& rule) {
    return *std::find_if(kEntries.begin(), kEntries.end(), [&rule](const Entry& entry) {
        return std::string_view(entry.rule.key) == rule.key;
    });
}

std::string Text(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    return text.str();
}

BrokenRule Broken(const char* key, const std::string& what) {
    return {{"scene", key}, "[scene] " + std::string(key) + ": " + what};
}

/// How far the highest point of a shape stands before the plate, or the projector before the head.
double Reach(const std::array<double, 3>& center, double radius) {
    return radius - center[2];
}

}  // namespace

std::span<const SceneRule> SceneRules() {
    return kRules;
}

double SceneValue(const SceneDescription& scene, const SceneRule& rule, std::size_t index) {
    const Entry& entry = EntryOf(rule);
    if (entry.real != nullptr) {
        return scene.*entry.real;
    }
    return entry.whole != nullptr ? scene.*entry.whole : (scene.*entry.place)[index];
}

void SetSceneValue(SceneDescription& scene, const SceneRule& rule, std::size_t index,
                   double value) {
    const Entry& entry = EntryOf(rule);
    if (entry.real != nullptr) {
        scene.*entry.real = value;
    } else if (entry.whole != nullptr) {
        scene.*entry.whole = static_cast<int>(value);
    } else {
        (scene.*entry.place)[index] = value;
    }
}

std::optional<BrokenRule> Check(const SceneRule& rule, double value) {
    if (value >= rule.lowest && value <= rule.highest) {
        return std::nullopt;
    }
    return Broken(rule.key, Text(value) + " is out of range, " + Text(rule.lowest) + " to " +
                                Text(rule.highest));
}

std::optional<BrokenRule> CheckTogether(const SceneDescription& scene) {
    const double boxRadius = std::hypot(scene.boxSize[0], scene.boxSize[1], scene.boxSize[2]) / 2;
    const double reach = std::max({0.0, Reach(scene.sphereCenter, scene.sphereRadius),
                                   Reach(scene.boxCenter, boxRadius)}) +
                         scene.motion;
    const double nearest = std::max(0.0, scene.projector[2]) + kNearest;
    if (scene.distance - reach < nearest) {
        return Broken("distance", "the object comes nearer than " + Text(kNearest) +
                                      " mm to the sensors or the projector");
    }
    return std::nullopt;
}

std::optional<BrokenRule> Check(const SceneDescription& scene) {
    for (const SceneRule& rule : kRules) {
        for (std::size_t i = 0; i < rule.count; ++i) {
            if (auto broken = Check(rule, SceneValue(scene, rule, i))) {
                return broken;
            }
        }
    }
    return CheckTogether(scene);
}

}  // namespace Korvex3Sync::virtual_head
