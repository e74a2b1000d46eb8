#include "virtual_head/config/HeadRules.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "platform/os/FileName.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {
namespace {

using Head = HeadDescription;
using Scene = SceneDescription;

const KeyRule kRules[] = {
    {"camera", "type", &Head::cameraType, 2, 64, "", "Camera type that discovery looks for", "KV"},
    {"camera", "serial", &Head::cameraSerial, 3, 64, "", "Serial number that both sensors share",
     "KV"},
    {"camera", "width", &Head::width, 16, 2000, "pixels",
     "Width of one image; width times height is a multiple of 4"},
    {"camera", "height", &Head::height, 16, 2000, "pixels", "Height of one image"},
    {"camera", "color", &Head::color, 0, 0, "", "Whether the head gives colour frames"},
    {"camera", "gain_low", &Head::gainLow, 0, 63, "steps",
     "Lowest gain of the sensors, not above gain_high"},
    {"camera", "gain_high", &Head::gainHigh, 0, 63, "steps", "Highest gain of the sensors"},
    {"camera", "buffers", &Head::cameraBuffers, 1, 4096, "frames",
     "Frames that can wait in each open camera; a frame is lost if there is no room"},

    {"board", "serial", &Head::boardSerial, 1, 32, "", "Serial number of the board"},
    {"board", "firmware", &Head::firmware, 1, 32, "", "Firmware version of the board"},
    {"board", "usb_speed", &Head::usbSpeed, 1, 4, "",
     "Negotiated USB speed: 1 low, 2 full, 3 high, 4 SuperSpeed"},

    {"scene", "focal_length", &Scene::focalLength, 200, 10000, "pixels of an image of 1280 x 1024",
     "Focal length of the sensors"},
    {"scene", "baseline", &Scene::baseline, 10, 500, "millimetres",
     "Distance between the two sensors"},
    {"scene", "toe_in", &Scene::toeIn, 0, 45, "degrees",
     "Angle by which each sensor is turned towards the other"},
    {"scene", "distance", &Scene::distance, 100, 1000, "millimetres",
     "Distance from the middle between the sensors to the plate; the object stays at least 40 mm "
     "away from the sensors and the projector"},
    {"scene", "sphere_center", &Scene::sphereCenter, -500, 500, "millimetres",
     "Middle of the sphere, in the object's coordinates: x, y, z"},
    {"scene", "sphere_radius", &Scene::sphereRadius, 1, 200, "millimetres", "Radius of the sphere"},
    {"scene", "box_center", &Scene::boxCenter, -500, 500, "millimetres",
     "Middle of the box, in the object's coordinates: x, y, z"},
    {"scene", "box_size", &Scene::boxSize, 1, 400, "millimetres",
     "Edges of the box along x, y and z"},
    {"scene", "box_turn", &Scene::boxTurn, -180, 180, "degrees",
     "Angle by which the box is turned about z"},
    {"scene", "projector", &Scene::projector, -300, 300, "millimetres",
     "Where laser lines, patterns and infrared light come from, in the head's coordinates: x, y, "
     "z"},
    {"scene", "laser_lines", &Scene::laserLines, 1, 25, "lines",
     "Lines in each of the two sets of laser lines"},
    {"scene", "laser_spacing", &Scene::laserSpacing, 2, 100, "millimetres",
     "Distance between two lines, at the plate"},
    {"scene", "laser_width", &Scene::laserWidth, 0.1, 5, "millimetres",
     "Width of a line at half of its peak, at the plate"},
    {"scene", "laser_angle", &Scene::laserAngle, 0, 60, "degrees",
     "Angle between the lines and the vertical, one set to each side"},
    {"scene", "poses", &Scene::poses, 1, 8, "steps",
     "Length of the closed path along which the object moves, one step for each trigger"},
    {"scene", "motion", &Scene::motion, 0, 30, "millimetres",
     "How far the object moves to each side on its path"},
    {"scene", "swing", &Scene::swing, 0, 15, "degrees",
     "How far the object turns to each side on its path"},

    {"replay", "folder", &Head::replayFolder, 0, 0, "",
     "Folder with leftNN.png and rightNN.png, and colorNN.png if there is a colour mosaic"},
};

/// The object must not come nearer to the head than this, in millimetres.
constexpr double kNearest = 40;

bool Printable(char c) {
    return c >= ' ' && c <= '~';
}

std::string NumberText(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    return text.str();
}

std::string RangeText(const KeyRule& rule) {
    return NumberText(rule.lowest) + " to " + NumberText(rule.highest);
}

std::string OutOfRange(const KeyRule& rule, const std::string& value) {
    return value + " is out of range, " + RangeText(rule);
}

bool Within(const KeyRule& rule, double value) {
    return value >= rule.lowest && value <= rule.highest;
}

BrokenRule Broken(const std::string& table, const std::string& key, const std::string& what) {
    return {table, key, "[" + table + "] " + key + ": " + what};
}

/// The distance of the highest point of a shape from the plate.
double Reach(const ThreeNumbers& center, double radius) {
    return radius - center[2];
}

bool ComesTooNear(const SceneDescription& scene) {
    const double boxRadius = std::hypot(scene.boxSize[0], scene.boxSize[1], scene.boxSize[2]) / 2;
    const double reach = std::max({0.0, Reach(scene.sphereCenter, scene.sphereRadius),
                                   Reach(scene.boxCenter, boxRadius)}) +
                         scene.motion;
    return scene.distance - reach < std::max(0.0, scene.projector[2]) + kNearest;
}

std::string Written(int value) {
    return std::to_string(value);
}
std::string Written(double value) {
    return NumberText(value);
}
std::string Written(bool value) {
    return value ? "true" : "false";
}
std::string Written(const std::string& value) {
    return '"' + value + '"';
}
std::string Written(const std::filesystem::path& value) {
    return value.empty() ? "" : Written(os::TextOf(value));
}
std::string Written(const ThreeNumbers& values) {
    return '[' + NumberText(values[0]) + ", " + NumberText(values[1]) + ", " +
           NumberText(values[2]) + ']';
}

}  // namespace

std::span<const KeyRule> KeyRules() {
    return kRules;
}

const KeyRule* FindKey(const std::string& table, const std::string& key) {
    const auto* const found =
        std::find_if(std::begin(kRules), std::end(kRules),
                     [&](const KeyRule& rule) { return rule.table == table && rule.key == key; });
    return found == std::end(kRules) ? nullptr : found;
}

std::string ValuesText(const KeyRule& rule) {
    const std::string unit = rule.unit[0] == '\0' ? "" : std::string(rule.unit) + ", ";
    const HeadDescription defaults;
    return WithValue(rule, defaults, [&](const auto& value) -> std::string {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, bool>) {
            return "true or false";
        } else if constexpr (std::is_same_v<Value, std::filesystem::path>) {
            return "a path, relative to the folder of the head file";
        } else if constexpr (std::is_same_v<Value, std::string>) {
            const std::string prefix = rule.prefix;
            return RangeText(rule) + " characters" +
                   (prefix.empty() ? "" : " that begin with " + prefix);
        } else if constexpr (std::is_same_v<Value, ThreeNumbers>) {
            return unit + RangeText(rule) + " each";
        } else {
            return unit + RangeText(rule);
        }
    });
}

std::string ValueText(const KeyRule& rule, const HeadDescription& description) {
    return WithValue(rule, description, [](const auto& value) { return Written(value); });
}

std::string KeyText(const KeyRule& rule) {
    return '[' + std::string(rule.table) + "] " + rule.key;
}

std::optional<std::string> Check(const KeyRule& rule, std::int64_t value) {
    return Within(rule, static_cast<double>(value))
               ? std::nullopt
               : std::optional(OutOfRange(rule, std::to_string(value)));
}

std::optional<std::string> Check(const KeyRule& rule, double value) {
    return Within(rule, value) ? std::nullopt : std::optional(OutOfRange(rule, NumberText(value)));
}

std::optional<std::string> Check(const KeyRule& rule, const ThreeNumbers& values) {
    for (const double value : values) {
        if (auto wrong = Check(rule, value)) {
            return wrong;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Check(const KeyRule& rule, const std::string& value) {
    if (!Within(rule, static_cast<double>(value.size()))) {
        return "the text has " + std::to_string(value.size()) + " characters, not " +
               RangeText(rule);
    }
    if (!std::all_of(value.begin(), value.end(), Printable)) {
        return "the text has a character that is not printable ASCII";
    }
    if (!value.starts_with(rule.prefix)) {
        return '"' + value + "\" does not begin with " + rule.prefix;
    }
    return std::nullopt;
}

std::optional<BrokenRule> CheckTogether(const HeadDescription& description) {
    if (description.gainLow > description.gainHigh) {
        return Broken("camera", "gain_low", "it is above gain_high");
    }
    if (description.width * description.height % 4 != 0) {
        return Broken("camera", "width", "width x height is not a multiple of 4");
    }
    if (ComesTooNear(description.scene)) {
        return Broken("scene", "distance",
                      "the object comes nearer than " + NumberText(kNearest) +
                          " mm to the sensors or the projector");
    }
    return std::nullopt;
}

std::optional<BrokenRule> Check(const HeadDescription& description) {
    for (const KeyRule& rule : kRules) {
        const auto wrong =
            WithValue(rule, description, [&](const auto& value) -> std::optional<std::string> {
                using Value = std::decay_t<decltype(value)>;
                if constexpr (std::is_same_v<Value, bool> ||
                              std::is_same_v<Value, std::filesystem::path>) {
                    return std::nullopt;
                } else if constexpr (std::is_same_v<Value, int>) {
                    return Check(rule, std::int64_t{value});
                } else {
                    return Check(rule, value);
                }
            });
        if (wrong) {
            return Broken(rule.table, rule.key, *wrong);
        }
    }
    for (const TimedFault& fault : description.faults) {
        if (auto wrong = Check(fault)) {
            return BrokenRule{"fault", "what", "[[fault]] " + *wrong};
        }
    }
    return CheckTogether(description);
}

}  // namespace Korvex3Sync::virtual_head
