#include "virtual_head/scene/Object.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Korvex3Sync::virtual_head::scene {
namespace {

constexpr float kFarthest = 3000;  // everything beyond is black
constexpr float kFlat = 1e-9F;

float NotZero(float value) {
    return std::abs(value) < kFlat ? kFlat : value;
}

/// The part of a ray between two parallel faces at -half and +half.
struct Stretch {
    float begin;
    float end;
};
Stretch Between(float from, float direction, float half) {
    const float inverse = 1 / NotZero(direction);
    const float a = (-half - from) * inverse;
    const float b = (half - from) * inverse;
    return {std::min(a, b), std::max(a, b)};
}

Rotation BoxAxes(double degrees) {
    const auto angle = static_cast<float>(degrees * std::numbers::pi / 180);
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return {{c, s, 0}, {-s, c, 0}, {0, 0, 1}};
}

}  // namespace

Object::Object(const SceneDescription& scene)
    : m_sphereCenter(ToVector(scene.sphereCenter)),
      m_sphereRadius(static_cast<float>(scene.sphereRadius)),
      m_boxCenter(ToVector(scene.boxCenter)),
      m_boxHalf(ToVector(scene.boxSize) * 0.5F),
      m_boxRadius(std::sqrt(Dot(m_boxHalf, m_boxHalf))),
      m_boxTurn(BoxAxes(scene.boxTurn)) {}

Hit Object::MeetBox(const Vector& from, const Vector& direction) const {
    const Vector start = InBox(from);
    const Vector way = m_boxTurn * direction;
    const Stretch x = Between(start.x, way.x, m_boxHalf.x);
    const Stretch y = Between(start.y, way.y, m_boxHalf.y);
    const Stretch z = Between(start.z, way.z, m_boxHalf.z);
    const float begin = std::max({x.begin, y.begin, z.begin});
    const float end = std::min({x.end, y.end, z.end});
    if (begin >= end || begin <= 0) {
        return {};
    }
    Vector normal;
    if (begin == x.begin) {
        normal.x = way.x > 0 ? -1.0F : 1.0F;
    } else if (begin == y.begin) {
        normal.y = way.y > 0 ? -1.0F : 1.0F;
    } else {
        normal.z = way.z > 0 ? -1.0F : 1.0F;
    }
    return {Shape::Box, begin, from + direction * begin, m_boxTurn.Inverse() * normal};
}

bool Object::Shades(const Hit& point, const Vector& light) const {
    const Vector way = light - point.point;
    const float length = Dot(way, way);
    // Whether a ball blocks the light: its centre is nearer to the light path than its radius.
    const auto near = [&](const Vector& center, float radius) {
        const Vector to = center - point.point;
        const float along = std::clamp(Dot(to, way) / length, 0.0F, 1.0F);
        const Vector off = to - way * along;
        return Dot(off, off) < radius * radius;
    };
    if (point.shape != Shape::Sphere && near(m_sphereCenter, m_sphereRadius)) {
        return true;
    }
    if (point.shape == Shape::Box || !near(m_boxCenter, m_boxRadius)) {
        return false;
    }
    const Hit hit = MeetBox(point.point, way);
    return hit.shape == Shape::Box && hit.along < 1;
}

Tracer::Ball Tracer::MakeBall(const Vector& from, const Vector& center, float radius) {
    const Vector to = center - from;
    return {to, Dot(to, to) - radius * radius};
}

Tracer::Tracer(const Object& object, const Vector& from)
    : m_object(object),
      m_from(from),
      m_sphere(MakeBall(from, object.SphereCenter(), object.SphereRadius())),
      m_aroundBox(MakeBall(from, object.BoxCenter(), object.BoxRadius())) {}

Hit Tracer::Meet(const Vector& direction) const {
    Hit hit;
    const float length = Dot(direction, direction);
    // Only rays towards the front of the plate can hit it.
    if (m_from.z < 0 && direction.z > kFlat) {
        const float along = -m_from.z / direction.z;
        if (along * along * length < kFarthest * kFarthest) {
            hit = {Shape::Plate, along, m_from + direction * along, {0, 0, -1}};
        }
    }
    const float middle = Dot(m_sphere.toCenter, direction);
    const float depth = middle * middle - length * m_sphere.outside;
    if (depth > 0) {
        const float along = (middle - std::sqrt(depth)) / length;
        if (along > 0 && (hit.shape == Shape::None || along < hit.along)) {
            const Vector point = m_from + direction * along;
            const Vector normal = (point - m_object.SphereCenter()) * (1 / m_object.SphereRadius());
            hit = {Shape::Sphere, along, point, normal};
        }
    }
    const float boxMiddle = Dot(m_aroundBox.toCenter, direction);
    if (boxMiddle * boxMiddle > length * m_aroundBox.outside) {
        const Hit box = m_object.MeetBox(m_from, direction);
        if (box.shape == Shape::Box && (hit.shape == Shape::None || box.along < hit.along)) {
            hit = box;
        }
    }
    return hit;
}

}  // namespace Korvex3Sync::virtual_head::scene
