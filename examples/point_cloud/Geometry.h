#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

// The positions of sensors, laser lines and object in the scene of the virtual head: the defaults
// that docs/virtual-head.md describes. A real head needs its calibration here.

namespace point_cloud {

inline constexpr double kFocalLength = 1500;  // pixels, for images of 1280 x 1024
inline constexpr double kBaseline = 150;      // mm
inline constexpr double kToeIn = 13;          // degrees
inline constexpr double kDistance = 320;      // mm, from the middle of the baseline to the plate
inline constexpr int kLaserLines = 9;
inline constexpr double kLaserSpacing = 22;  // mm, at the plate
inline constexpr double kLaserAngle = 20;    // degrees from the vertical
inline constexpr int kPoses = 4;
inline constexpr double kMotion = 6;    // mm
inline constexpr double kSwing = 4;     // degrees
inline constexpr double kHighest = 70;  // mm: no part of the object is higher above the plate
inline constexpr double kLowest = 3;    // mm below the plate, to allow for noise

constexpr double Radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

// x to the right, y down, z away from the head; millimetres.
struct Vector {
    double x = 0;
    double y = 0;
    double z = 0;
};

inline Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(const Vector& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
inline double Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vector Unit(const Vector& a) {
    return a * (1 / std::sqrt(Dot(a, a)));
}

struct Pixel {
    double column = 0;
    double row = 0;
};

// An ideal sensor, at one end of the baseline and turned inwards.
class Sensor {
public:
    // `side` is -1 for the left sensor and 1 for the right one.
    Sensor(double side, int width, int height)
        : m_center{side * kBaseline / 2, 0, 0},
          m_x{std::cos(Radians(kToeIn)), 0, side * std::sin(Radians(kToeIn))},
          m_z{-side * std::sin(Radians(kToeIn)), 0, std::cos(Radians(kToeIn))},
          m_focal(kFocalLength * std::max(width / 1280.0, height / 1024.0)),
          m_middle{(width - 1) / 2.0, (height - 1) / 2.0} {}

    const Vector& Center() const { return m_center; }

    Vector Ray(const Pixel& pixel) const {
        return m_x * ((pixel.column - m_middle.column) / m_focal) +
               Vector{0, (pixel.row - m_middle.row) / m_focal, 0} + m_z;
    }

    Pixel Project(const Vector& point) const {
        const Vector seen = point - m_center;
        const double depth = Dot(seen, m_z);
        return {m_middle.column + m_focal * Dot(seen, m_x) / depth,
                m_middle.row + m_focal * seen.y / depth};
    }

private:
    Vector m_center;
    Vector m_x;
    Vector m_z;
    double m_focal;
    Pixel m_middle;
};

inline const Vector kLaser{0, -70, 0};

// The normals of the light planes of the lines in laser work mode 1.
inline std::vector<Vector> LaserPlanes() {
    const Vector aim = Vector{0, 0, kDistance} - kLaser;
    const double reach = std::sqrt(Dot(aim, aim));
    const Vector z = Unit(aim);
    const Vector x = Unit(Cross({0, 1, 0}, z));
    const Vector y = Cross(z, x);
    std::vector<Vector> normals;
    for (int line = 0; line < kLaserLines; ++line) {
        // The line consists of the directions x * u + y * v + z with u * cos + v * sin = offset.
        const double offset = (line - (kLaserLines - 1) / 2.0) * kLaserSpacing / reach;
        normals.push_back(x * std::cos(Radians(kLaserAngle)) + y * std::sin(Radians(kLaserAngle)) -
                          z * offset);
    }
    return normals;
}

// The object moves from trigger to trigger: head = turn * object + shift.
class Pose {
public:
    explicit Pose(int key) {
        const double phase = 2 * std::numbers::pi * (key % kPoses) / kPoses;
        const double along = std::cos(phase);
        const double across = std::sin(phase);
        const double swing = Radians(kSwing * along);
        const double nod = Radians(kSwing * across / 2);
        m_shift = {kMotion * along, kMotion * across / 2, kDistance + kMotion * across};
        // Turns about x by `nod`, then about y by `swing`; the columns are the object's axes.
        m_x = {std::cos(swing), 0, -std::sin(swing)};
        m_y = {std::sin(swing) * std::sin(nod), std::cos(nod), std::cos(swing) * std::sin(nod)};
        m_z = {std::sin(swing) * std::cos(nod), -std::sin(nod), std::cos(swing) * std::cos(nod)};
    }

    Vector ToObject(const Vector& head) const {
        const Vector moved = head - m_shift;
        return {Dot(moved, m_x), Dot(moved, m_y), Dot(moved, m_z)};
    }

private:
    Vector m_shift;
    Vector m_x;
    Vector m_y;
    Vector m_z;
};

}  // namespace point_cloud
