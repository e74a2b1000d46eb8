#include "virtual_head/scene/Geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Korvex3Sync::virtual_head::scene {
namespace {

float Radians(double degrees) {
    return static_cast<float>(degrees * std::numbers::pi / 180);
}

/// Turns z towards x.
Rotation AboutY(float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return {{c, 0, s}, {0, 1, 0}, {-s, 0, c}};
}

/// Turns y towards z.
Rotation AboutX(float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return {{1, 0, 0}, {0, c, -s}, {0, s, c}};
}

Vector ToObject(const Pose& pose, const Vector& head) {
    return pose.turn.Inverse() * (head - pose.shift);
}

Rotation ToObject(const Pose& pose, const Rotation& axes) {
    const Rotation back = pose.turn.Inverse();
    return {back * axes.x, back * axes.y, back * axes.z};
}

}  // namespace

Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vector Unit(const Vector& a) {
    return a * (1 / std::sqrt(Dot(a, a)));
}

Vector ToVector(const std::array<double, 3>& place) {
    return {static_cast<float>(place[0]), static_cast<float>(place[1]),
            static_cast<float>(place[2])};
}

Rotation Rotation::operator*(const Rotation& other) const {
    const Rotation columns = other.Inverse();
    return {columns * x, columns * y, columns * z};
}

Camera MakeCamera(const HeadDescription& description, int sensor) {
    const SceneDescription& scene = description.scene;
    const float side = sensor == 0 ? -1.0F : 1.0F;
    const float angle = -side * Radians(scene.toeIn);
    Camera camera;
    camera.center = {side * static_cast<float>(scene.baseline) / 2, 0, 0};
    camera.axes = AboutY(angle).Inverse();
    camera.focal = static_cast<float>(
        scene.focalLength * std::max(description.width / 1280.0, description.height / 1024.0));
    camera.middleX = static_cast<float>(description.width - 1) / 2;
    camera.middleY = static_cast<float>(description.height - 1) / 2;
    return camera;
}

Projector MakeProjector(const SceneDescription& scene) {
    Projector projector;
    projector.center = ToVector(scene.projector);
    const Vector aim = Vector{0, 0, static_cast<float>(scene.distance)} - projector.center;
    projector.reach = std::sqrt(Dot(aim, aim));
    const Vector z = Unit(aim);
    const Vector x = Unit(Cross({0, 1, 0}, z));
    projector.axes = {x, Cross(z, x), z};
    return projector;
}

Pose MakePose(const SceneDescription& scene, int number) {
    const double phase = 2 * std::numbers::pi * number / scene.poses;
    const double along = std::cos(phase);
    const double across = std::sin(phase);
    Pose pose;
    pose.turn = AboutY(Radians(scene.swing * along)) * AboutX(Radians(scene.swing * across / 2));
    pose.shift = {static_cast<float>(scene.motion * along),
                  static_cast<float>(scene.motion * across / 2),
                  static_cast<float>(scene.distance + scene.motion * across)};
    return pose;
}

Camera Seen(const Pose& pose, const Camera& camera) {
    Camera seen = camera;
    seen.center = ToObject(pose, camera.center);
    seen.axes = ToObject(pose, camera.axes);
    return seen;
}

Projector Seen(const Pose& pose, const Projector& projector) {
    Projector seen = projector;
    seen.center = ToObject(pose, projector.center);
    seen.axes = ToObject(pose, projector.axes);
    return seen;
}

}  // namespace Korvex3Sync::virtual_head::scene
