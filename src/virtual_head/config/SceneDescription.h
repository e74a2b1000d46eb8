#pragma once

#include <array>

namespace Korvex3Sync::virtual_head {

/// The scene that the virtual head sees, and the positions of its sensors and lights. Lengths are
/// in millimetres, angles in degrees. docs/virtual-head.md explains the coordinates (x to the
/// right, y down, z away from the head). The limits are in HeadRules.cpp.
struct SceneDescription {
    /// In pixels of an image of 1280 x 1024. Images of other sizes show the same field of view.
    double focalLength = 1500;
    /// Between the two sensors.
    double baseline = 150;
    /// Each sensor is turned towards the other by this angle.
    double toeIn = 13;

    /// From the middle of the baseline to the middle of the object's plate.
    double distance = 320;
    /// The sphere and the box stand on the plate, in the object's coordinates.
    std::array<double, 3> sphereCenter{-34, -14, -18};
    double sphereRadius = 40;
    std::array<double, 3> boxCenter{50, 30, -16};
    std::array<double, 3> boxSize{64, 44, 32};
    double boxTurn = 20;  // about z

    /// Where laser lines, patterns and infrared light come from, in the head's coordinates.
    std::array<double, 3> projector{0, -70, 0};
    /// The number of lines in each of the two sets of laser lines, and their distance at the plate.
    int laserLines = 9;
    double laserSpacing = 22;
    /// Full width at half maximum, at the plate.
    double laserWidth = 0.8;
    /// The sets are tilted from the vertical by this angle, one to each side.
    double laserAngle = 20;

    /// The object moves along a closed path, one step for each trigger.
    int poses = 4;
    double motion = 6;
    double swing = 4;

    bool operator==(const SceneDescription&) const = default;
};

}  // namespace Korvex3Sync::virtual_head
