#include "head/SceneGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Korvex3Sync::tests {
namespace {

constexpr double kRadian = std::numbers::pi / 180;

/// The object's coordinates of a point: the pose undone.
Point InObject(const virtual_head::SceneDescription& scene, int pose, const Point& point) {
    const double phase = 2 * std::numbers::pi * pose / scene.poses;
    const Point shift{scene.motion * std::cos(phase), scene.motion / 2 * std::sin(phase),
                      scene.distance + scene.motion * std::sin(phase)};
    const double a = scene.swing * std::cos(phase) * kRadian;
    const double b = scene.swing / 2 * std::sin(phase) * kRadian;
    const Point p = point - shift;
    const Point aboutY{std::cos(a) * p[0] - std::sin(a) * p[2], p[1],
                       std::sin(a) * p[0] + std::cos(a) * p[2]};
    return {aboutY[0], std::cos(b) * aboutY[1] + std::sin(b) * aboutY[2],
            -std::sin(b) * aboutY[1] + std::cos(b) * aboutY[2]};
}

double DistanceToBox(const virtual_head::SceneDescription& scene, const Point& point) {
    const Point p = point - scene.boxCenter;
    const double turn = scene.boxTurn * kRadian;
    const Point inBox{std::cos(turn) * p[0] + std::sin(turn) * p[1],
                      -std::sin(turn) * p[0] + std::cos(turn) * p[1], p[2]};
    Point outside{};
    double deepest = -1e9;
    for (std::size_t i = 0; i < 3; ++i) {
        const double over = std::abs(inBox[i]) - scene.boxSize[i] / 2;
        outside[i] = std::max(over, 0.0);
        deepest = std::max(deepest, over);
    }
    return deepest > 0 ? Length(outside) : -deepest;
}

}  // namespace

Point operator+(const Point& a, const Point& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Point operator-(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Point operator*(const Point& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}
double Dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double Length(const Point& a) {
    return std::sqrt(Dot(a, a));
}

Sensor::Sensor(const virtual_head::HeadDescription& description, Side side)
    : m_center{description.scene.baseline * (side == Left ? -0.5 : 0.5), 0, 0},
      m_toeIn(description.scene.toeIn * kRadian * (side == Left ? 1 : -1)),
      m_focal(description.scene.focalLength *
              std::max(description.width / 1280.0, description.height / 1024.0)),
      m_middle{(description.width - 1) / 2.0, (description.height - 1) / 2.0} {}

Point Sensor::Ray(const Pixel& pixel) const {
    const double x = (pixel.x - m_middle.x) / m_focal;
    const double y = (pixel.y - m_middle.y) / m_focal;
    return {std::cos(m_toeIn) * x + std::sin(m_toeIn), y,
            -std::sin(m_toeIn) * x + std::cos(m_toeIn)};
}

std::optional<Pixel> Sensor::Project(const Point& point) const {
    const Point p = point - m_center;
    const double x = std::cos(m_toeIn) * p[0] - std::sin(m_toeIn) * p[2];
    const double z = std::sin(m_toeIn) * p[0] + std::cos(m_toeIn) * p[2];
    if (z <= 0) {
        return std::nullopt;
    }
    return Pixel{m_middle.x + m_focal * x / z, m_middle.y + m_focal * p[1] / z};
}

Point Triangulate(const Sensor& left, const Pixel& leftPixel, const Sensor& right,
                  const Pixel& rightPixel) {
    const Point a = left.Ray(leftPixel);
    const Point b = right.Ray(rightPixel);
    const Point between = right.Center() - left.Center();
    const double ab = Dot(a, b);
    const double divisor = Dot(a, a) * Dot(b, b) - ab * ab;
    const double s = (Dot(b, b) * Dot(a, between) - ab * Dot(b, between)) / divisor;
    const double t = (ab * Dot(a, between) - Dot(a, a) * Dot(b, between)) / divisor;
    return (left.Center() + a * s + right.Center() + b * t) * 0.5;
}

double AlongToFirstSet(const virtual_head::SceneDescription& scene, int line, const Point& from,
                       const Point& direction) {
    const Point light = scene.projector;
    const Point aim = Point{0, 0, scene.distance} - light;
    const double reach = Length(aim);
    const Point z = aim * (1 / reach);
    const double across = std::hypot(z[0], z[2]);
    const Point x{z[2] / across, 0, -z[0] / across};
    const Point y{z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2], z[0] * x[1] - z[1] * x[0]};
    const double angle = scene.laserAngle * kRadian;
    const double offset = (line - (scene.laserLines - 1) / 2.0) * scene.laserSpacing / reach;
    // The sheet: u cos + v sin = offset, with u and v the slopes in the light's coordinates.
    const Point normal = x * std::cos(angle) + y * std::sin(angle) - z * offset;
    return Dot(normal, light - from) / Dot(normal, direction);
}

double DistanceToObject(const virtual_head::SceneDescription& scene, int pose, const Point& point) {
    const Point p = InObject(scene, pose, point);
    const double sphere = std::abs(Length(p - scene.sphereCenter) - scene.sphereRadius);
    return std::min({std::abs(p[2]), sphere, DistanceToBox(scene, p)});
}

}  // namespace Korvex3Sync::tests
