#pragma once

#include <array>

#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head::scene {

/// A point or a direction, in millimetres.
struct Vector {
    float x = 0;
    float y = 0;
    float z = 0;
};

inline Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(const Vector& a, float factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
inline float Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector Cross(const Vector& a, const Vector& b);
Vector Unit(const Vector& a);
Vector ToVector(const std::array<double, 3>& place);

/// The next lower integer. Avoids std::floor, which is a function call on older processors.
inline int Floor(float value) {
    const int cut = static_cast<int>(value);
    return cut - (static_cast<float>(cut) > value ? 1 : 0);
}

/// A rotation: its rows are the axes of the new coordinates in the old ones.
struct Rotation {
    Vector x{1, 0, 0};
    Vector y{0, 1, 0};
    Vector z{0, 0, 1};

    Vector operator*(const Vector& a) const { return {Dot(x, a), Dot(y, a), Dot(z, a)}; }
    Rotation operator*(const Rotation& other) const;
    Rotation Inverse() const { return {{x.x, y.x, z.x}, {x.y, y.y, z.y}, {x.z, y.z, z.z}}; }
};

/// An ideal sensor. The ray of pixel (column, row) starts at `center` and has the direction axes.x
/// * (column - middleX) / focal + axes.y * (row - middleY) / focal + axes.z.
struct Camera {
    Vector center;
    Rotation axes;
    float focal = 1;  // pixels
    float middleX = 0;
    float middleY = 0;
};

/// The origin of lines and patterns. Its slopes u and v define a direction: axes.x * u + axes.y * v
/// + axes.z.
struct Projector {
    Vector center;
    Rotation axes;
    float reach = 1;  // distance to the middle of the plate
};

/// The pose of the object: head = turn * object + shift.
struct Pose {
    Rotation turn;
    Vector shift;
};

/// A sensor in the coordinates of the head: 0 is the left one, 1 the right one.
Camera MakeCamera(const HeadDescription& description, int sensor);
Projector MakeProjector(const SceneDescription& scene);
Pose MakePose(const SceneDescription& scene, int number);

/// The same in the coordinates of the object.
Camera Seen(const Pose& pose, const Camera& camera);
Projector Seen(const Pose& pose, const Projector& projector);

}  // namespace Korvex3Sync::virtual_head::scene
